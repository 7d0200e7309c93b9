#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSData.Tables.h"
#include "Foundation/NSString.Tables.h"
#include "Foundation/PropertyListReader.h"

namespace {

constexpr const char *kFile = "src/Foundation/NSString.PropertyList";

id propertyListOf(std::string_view text) {
    qb::PropertyListReader reader(text);
    Ref<NSObject> value = reader.read();
    const qb::PropertyListFailure failure = reader.failure();
    if (failure.expected)
        qb::raiseError(kFile, __LINE__, qb::kErrorMalformedPropertyList, failure.line, failure.column,
                       failure.expected);
    return value.autorelease();
}

} // namespace

std::span<const qb::Method> qb::tables::stringPropertyList() {
    static const qb::Method methods[] = {
        qb::method<"propertyList">(&NSString::propertyList),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::dataPropertyList() {
    static const qb::Method methods[] = {
        qb::method<"propertyList">(&NSData::propertyList),
    };
    return methods;
}

id NSString::propertyList() const {
    return propertyListOf(view());
}

id NSData::propertyList() const {
    return propertyListOf({static_cast<const char *>(bytes()), length()});
}
