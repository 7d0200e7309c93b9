#include <QBFoundation/Foundation/NSCoder.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSCoder.Tables.h"
#include "Foundation/TypeCodes.h"

#include <string>
#include <string_view>

char qb::typeCode(const char *type) {
    const char code = type && type[0] != '\0' && type[1] == '\0' ? type[0] : '\0';
    if (code == '\0' || !std::strchr("cCBsSiIlLqQfd*@#:", code))
        throw InvalidArgumentException(std::string("NSCoder must have a code of one type, not '") +
                                       (type ? type : "(null)") + "'.");
    return code;
}

char qb::typeCode(const char *type, const void *variable) {
    if (!variable)
        throw InvalidArgumentException("NSCoder must have a variable that is not NULL.");
    return typeCode(type);
}

std::uint32_t qb::sizeOfTypeCode(char code) {
    std::uint32_t size = code == 'f' ? sizeof(float) : code == 'd' ? sizeof(double) : sizeof(void *);
    visitInteger(code, [&](auto zero) { size = sizeof zero; });
    return size;
}

namespace {

// Calls `visit` with each type's code and where the value is.
template <class F>
void forEachValue(const char *types, const qb::ArgList &pointers, F &&visit) {
    const std::string_view codes = types ? types : "";
    if (codes.size() != pointers.count())
        throw InvalidArgumentException("NSCoder must have a pointer for each type of '" + std::string(codes) +
                                       "'.");
    for (std::uint32_t i = 0; i < pointers.count(); ++i) {
        const char code[2] = {codes[i], '\0'};
        visit(code, pointers[i].pointer());
    }
}

} // namespace

Class *NSCoder::cls() {
    using Text = const char *;
    using Count = std::uint32_t;
    static const qb::Method methods[] = {
        qb::method<"encodeValueOfObjCType:at:", void(Text, const void *)>(&NSCoder::encodeValueOfObjCType),
        qb::method<"decodeValueOfObjCType:at:", void(Text, void *)>(&NSCoder::decodeValueOfObjCType),
        qb::method<"encodeArrayOfObjCType:count:at:">(&NSCoder::encodeArrayOfObjCType),
        qb::method<"decodeArrayOfObjCType:count:at:">(&NSCoder::decodeArrayOfObjCType),
        qb::method<"encodeValuesOfObjCTypes:">(&NSCoder::encodeValuesOfObjCTypesWithArgList),
        qb::method<"decodeValuesOfObjCTypes:">(&NSCoder::decodeValuesOfObjCTypesWithArgList),
        qb::method<"encodeBytes:length:", void(const void *, Count)>(&NSCoder::encodeBytes),
        qb::method<"decodeBytesWithReturnedLength:">(&NSCoder::decodeBytesWithReturnedLength),
        qb::method<"encodeObject:", void(id)>(&NSCoder::encodeObject),
        qb::method<"decodeObject">(&NSCoder::decodeObject),
        qb::method<"encodeDataObject:">(&NSCoder::encodeDataObject),
        qb::method<"decodeDataObject">(&NSCoder::decodeDataObject),
        qb::method<"encodePropertyList:">(&NSCoder::encodePropertyList),
        qb::method<"decodePropertyList">(&NSCoder::decodePropertyList),
        qb::method<"encodeRootObject:">(&NSCoder::encodeRootObject),
        qb::method<"encodeConditionalObject:", void(id)>(&NSCoder::encodeConditionalObject),
        qb::method<"allowsKeyedCoding">(&NSCoder::allowsKeyedCoding),
        qb::method<"encodeValueOfObjCType:at:forKey:", void(Text, const void *, NSString *)>(
            &NSCoder::encodeValueOfObjCType),
        qb::method<"decodeValueOfObjCType:at:forKey:", void(Text, void *, NSString *)>(
            &NSCoder::decodeValueOfObjCType),
        qb::method<"encodeBytes:length:forKey:", void(const void *, Count, NSString *)>(
            &NSCoder::encodeBytes),
        qb::method<"decodeBytesForKey:returnedLength:">(&NSCoder::decodeBytesForKey),
        qb::method<"containsValueForKey:">(&NSCoder::containsValueForKey),
        qb::method<"encodeConditionalObject:forKey:", void(id, NSString *)>(
            &NSCoder::encodeConditionalObject),
        qb::method<"encodeObject:forKey:", void(id, NSString *)>(&NSCoder::encodeObject),
        qb::method<"encodeBool:forKey:">(&NSCoder::encodeBool),
        qb::method<"encodeInt:forKey:">(&NSCoder::encodeInt),
        qb::method<"encodeInt32:forKey:">(&NSCoder::encodeInt32),
        qb::method<"encodeInt64:forKey:">(&NSCoder::encodeInt64),
        qb::method<"encodeFloat:forKey:">(&NSCoder::encodeFloat),
        qb::method<"encodeDouble:forKey:">(&NSCoder::encodeDouble),
        qb::method<"decodeObjectForKey:">(&NSCoder::decodeObjectForKey),
        qb::method<"decodeBoolForKey:">(&NSCoder::decodeBoolForKey),
        qb::method<"decodeIntForKey:">(&NSCoder::decodeIntForKey),
        qb::method<"decodeInt32ForKey:">(&NSCoder::decodeInt32ForKey),
        qb::method<"decodeInt64ForKey:">(&NSCoder::decodeInt64ForKey),
        qb::method<"decodeFloatForKey:">(&NSCoder::decodeFloatForKey),
        qb::method<"decodeDoubleForKey:">(&NSCoder::decodeDoubleForKey),
    };
    static Class *const self = new Class("NSCoder", NSObject::cls(), {methods, qb::tables::coderAdditions()});
    return self;
}

// --- What a subclass has to do ---

void NSCoder::encodeValueOfObjCType(const char *, const void *) {
    subclassResponsibility("encodeValueOfObjCType:at:"_sel);
}

void NSCoder::decodeValueOfObjCType(const char *, void *) {
    subclassResponsibility("decodeValueOfObjCType:at:"_sel);
}

void NSCoder::encodeBytes(const void *, std::uint32_t) {
    subclassResponsibility("encodeBytes:length:"_sel);
}

const void *NSCoder::decodeBytesWithReturnedLength(std::uint32_t *) {
    subclassResponsibility("decodeBytesWithReturnedLength:"_sel);
    return nullptr;
}

void NSCoder::encodeValueOfObjCType(const char *, const void *, NSString *) {
    subclassResponsibility("encodeValueOfObjCType:at:forKey:"_sel);
}

void NSCoder::decodeValueOfObjCType(const char *, void *, NSString *) {
    subclassResponsibility("decodeValueOfObjCType:at:forKey:"_sel);
}

void NSCoder::encodeBytes(const void *, std::uint32_t, NSString *) {
    subclassResponsibility("encodeBytes:length:forKey:"_sel);
}

const void *NSCoder::decodeBytesForKey(NSString *, std::uint32_t *) {
    subclassResponsibility("decodeBytesForKey:returnedLength:"_sel);
    return nullptr;
}

BOOL NSCoder::containsValueForKey(NSString *) const {
    subclassResponsibility("containsValueForKey:"_sel);
    return NO;
}

// --- What follows from that ---

void NSCoder::encodeArrayOfObjCType(const char *type, std::uint32_t count, const void *at) {
    const std::uint32_t size = qb::sizeOfTypeCode(qb::typeCode(type));
    const char *place = static_cast<const char *>(at);
    for (std::uint32_t i = 0; i < count; ++i, place += size)
        encodeValueOfObjCType(type, place);
}

void NSCoder::decodeArrayOfObjCType(const char *type, std::uint32_t count, void *at) {
    const std::uint32_t size = qb::sizeOfTypeCode(qb::typeCode(type));
    char *place = static_cast<char *>(at);
    for (std::uint32_t i = 0; i < count; ++i, place += size)
        decodeValueOfObjCType(type, place);
}

void NSCoder::encodeValuesOfObjCTypesWithArgList(const char *types, const qb::ArgList &argList) {
    forEachValue(types, argList, [this](const char *type, void *at) { encodeValueOfObjCType(type, at); });
}

void NSCoder::decodeValuesOfObjCTypesWithArgList(const char *types, const qb::ArgList &argList) {
    forEachValue(types, argList, [this](const char *type, void *at) { decodeValueOfObjCType(type, at); });
}

void NSCoder::encodeDataObject(NSData *data) {
    encodeObject(data);
}

NSData *NSCoder::decodeDataObject() {
    return qb::castOrNil<NSData>(decodeObject());
}

void NSCoder::encodeObject(id object) {
    encodeValueOfObjCType("@", &object);
}

id NSCoder::decodeObject() {
    id object = nullptr;
    decodeValueOfObjCType("@", &object);
    return object;
}

void NSCoder::encodeConditionalObject(id object, NSString *key) {
    encodeObject(object, key);
}

void NSCoder::encodeObject(id object, NSString *key) {
    encodeValueOfObjCType("@", &object, key);
}

void NSCoder::encodeBool(BOOL value, NSString *key) {
    encodeValueOfObjCType("c", &value, key);
}

void NSCoder::encodeInt(std::int32_t value, NSString *key) {
    encodeValueOfObjCType("i", &value, key);
}

void NSCoder::encodeInt64(std::int64_t value, NSString *key) {
    encodeValueOfObjCType("q", &value, key);
}

void NSCoder::encodeFloat(float value, NSString *key) {
    encodeValueOfObjCType("f", &value, key);
}

void NSCoder::encodeDouble(double value, NSString *key) {
    encodeValueOfObjCType("d", &value, key);
}

id NSCoder::decodeObjectForKey(NSString *key) {
    id object = nullptr;
    decodeValueOfObjCType("@", &object, key);
    return object;
}

BOOL NSCoder::decodeBoolForKey(NSString *key) {
    BOOL value = NO;
    decodeValueOfObjCType("c", &value, key);
    return value;
}

std::int32_t NSCoder::decodeIntForKey(NSString *key) {
    std::int32_t value = 0;
    decodeValueOfObjCType("i", &value, key);
    return value;
}

std::int64_t NSCoder::decodeInt64ForKey(NSString *key) {
    std::int64_t value = 0;
    decodeValueOfObjCType("q", &value, key);
    return value;
}

float NSCoder::decodeFloatForKey(NSString *key) {
    float value = 0;
    decodeValueOfObjCType("f", &value, key);
    return value;
}

double NSCoder::decodeDoubleForKey(NSString *key) {
    double value = 0;
    decodeValueOfObjCType("d", &value, key);
    return value;
}
