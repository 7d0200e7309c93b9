// Data as hexadecimal digits.
#include <QBFoundation/Foundation/NSData.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSData.Tables.h"
#include "Text/Hex.h"

std::span<const qb::Method> qb::tables::dataHexString() {
    static const qb::Method methods[] = {
        qb::method<"asHexString">(&NSData::asHexString),
    };
    return methods;
}

NSString *NSData::asHexString() const {
    if (length() >= UINT32_MAX / 2)
        throw InvalidArgumentException("NSData asHexString must have a result of less than 2^32 - 1 bytes.");
    return NSString::initFilled(std::size_t{length()} * 2,
                                [&](char *target) { qb::text::writeHex(bytes(), length(), target); })
        .autorelease();
}
