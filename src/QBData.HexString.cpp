// Data as hexadecimal digits.
#include <QBFoundation/Foundation/NSData.h>

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSData.Tables.h"
#include "Foundation/Required.h"
#include "Text/Hex.h"

std::span<const qb::Method> qb::tables::dataHexString() {
    static const qb::Method methods[] = {
        qb::method<"asHexString">(&NSData::asHexString),
    };
    return methods;
}

NSString *NSData::asHexString() const {
    const std::uint64_t digits = std::uint64_t{length()} * 2;
    qb::requireLength(digits, "NSData asHexString");
    return NSString::initFilled(static_cast<std::size_t>(digits),
                                [&](char *target) { qb::text::writeHex(bytes(), length(), target); })
        .autorelease();
}
