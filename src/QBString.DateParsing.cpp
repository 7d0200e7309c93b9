#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Calendar/HttpDate.h"
#include "Foundation/NSString.Tables.h"

std::span<const qb::Method> qb::tables::stringDateParsing() {
    static const qb::Method methods[] = {
        qb::method<"ctimeFromHTTPDate">(&NSString::ctimeFromHTTPDate),
    };
    return methods;
}

std::int32_t NSString::ctimeFromHTTPDate() const {
    return qb::calendar::parseHttpDate(view()).value_or(0);
}
