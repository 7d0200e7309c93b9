// Strings in upper and lower case.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Text/Unicode.h"

#include <string>

std::span<const qb::Method> qb::tables::stringCase() {
    static const qb::Method methods[] = {
        qb::method<"uppercaseString">(&NSString::uppercaseString),
        qb::method<"lowercaseString">(&NSString::lowercaseString),
        qb::method<"capitalizedString">(&NSString::capitalizedString),
    };
    return methods;
}

NSString *NSString::uppercaseString() const {
    return converted(qb::text::uppercased(view()));
}

NSString *NSString::lowercaseString() const {
    return converted(qb::text::lowercased(view()));
}

NSString *NSString::capitalizedString() const {
    return converted(qb::text::capitalized(view()));
}
