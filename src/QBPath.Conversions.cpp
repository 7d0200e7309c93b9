// Values as paths.
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/QBPath.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSArray.Tables.h"
#include "Foundation/NSNumber.Tables.h"
#include "Foundation/NSString.Tables.h"

std::span<const qb::Method> qb::tables::arrayPath() {
    static const qb::Method methods[] = {qb::method<"asQbPath">(&NSArray::asQbPath)};
    return methods;
}

std::span<const qb::Method> qb::tables::numberPath() {
    static const qb::Method methods[] = {qb::method<"asQbPath">(&NSNumber::asQbPath)};
    return methods;
}

std::span<const qb::Method> qb::tables::stringPathObject() {
    static const qb::Method methods[] = {qb::method<"asQbPath">(&NSString::asQbPath)};
    return methods;
}

QBPath *NSObject::asQbPath() const {
    doesNotRecognizeSelector("asQbPath"_sel);
    return nullptr;
}

QBPath *NSArray::asQbPath() const {
    return QBPath::qbPathWithArray(static_cast<NSArray *>(self()), /*isAbsolutePath=*/YES,
                                   /*isDirectory=*/NO);
}

QBPath *NSNumber::asQbPath() const {
    return stringValue()->asQbPath();
}

QBPath *NSString::asQbPath() const {
    return QBPath::qbPathWithString(static_cast<NSString *>(self()));
}
