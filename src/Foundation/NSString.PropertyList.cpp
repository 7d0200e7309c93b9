#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSData.Tables.h"
#include "Foundation/NSString.Tables.h"
#include "Foundation/PropertyListReader.h"

namespace {

constexpr const char *kFile = "src/Foundation/NSString.PropertyList";

// What `read` makes of the text.
id valueOf(std::string_view text, Ref<NSObject> (qb::PropertyListReader::*read)()) {
    qb::PropertyListReader reader(text);
    Ref<NSObject> value = (reader.*read)();
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
        qb::method<"propertyListFromStringsFileFormat">(&NSString::propertyListFromStringsFileFormat),
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
    return valueOf(view(), &qb::PropertyListReader::read);
}

NSDictionary *NSString::propertyListFromStringsFileFormat() const {
    return static_cast<NSDictionary *>(valueOf(view(), &qb::PropertyListReader::readEntries));
}

id NSData::propertyList() const {
    return valueOf({static_cast<const char *>(bytes()), length()}, &qb::PropertyListReader::read);
}
