#include <QBFoundation/Foundation/NSValue.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Text/Hash.h"

#include <cinttypes>
#include <cstdio>
#include <string>

Class *NSValue::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"valueWithRange:">(&NSValue::valueWithRange),
        qb::classMethod<"valueWithPointer:">(&NSValue::valueWithPointer),
        qb::classMethod<"valueWithNonretainedObject:">(&NSValue::valueWithNonretainedObject),
        qb::method<"objCType">(&NSValue::objCType),
        qb::method<"rangeValue">(&NSValue::rangeValue),
        qb::method<"pointerValue">(&NSValue::pointerValue),
        qb::method<"nonretainedObjectValue">(&NSValue::nonretainedObjectValue),
        qb::method<"isEqualToValue:">(&NSValue::isEqualToValue),
        qb::initialiser<"initWithCoder:">(&NSValue::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSValue::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSValue", NSObject::cls(), methods, qb::construct<NSValue>, {"NSCopying", "NSCoding"});
    return self;
}

NSValue *NSValue::make(Type type) {
    auto value = Ref<NSValue>::adopt(new NSValue);
    value->type_ = type;
    return value.autorelease();
}

NSValue *NSValue::valueWithRange(NSRange range) {
    NSValue *const value = make(Type::range);
    value->range_ = range;
    return value;
}

NSValue *NSValue::valueWithPointer(const void *pointer) {
    NSValue *const value = make(Type::pointer);
    value->pointer_ = const_cast<void *>(pointer);
    return value;
}

NSValue *NSValue::valueWithNonretainedObject(id object) {
    NSValue *const value = make(Type::nonretainedObject);
    value->pointer_ = object;
    return value;
}

const char *NSValue::objCType() const {
    switch (type_) {
    case Type::boolean:
        return "c";
    case Type::int32:
        return "i";
    case Type::uint32:
        return "I";
    case Type::int64:
        return "q";
    case Type::uint64:
        return "Q";
    case Type::real32:
        return "f";
    case Type::real64:
        return "d";
    case Type::range:
        return "{_NSRange=II}";
    case Type::pointer:
        return "^v";
    case Type::nonretainedObject:
        return "@";
    }
    return "";
}

void NSValue::requireType(Type type, const char *selector) const {
    if (type_ != type)
        throw InvalidUseOfMethodException(std::string(classObject()->nameView()) + " " + selector +
                                          " must have a receiver that holds such a value.");
}

NSRange NSValue::rangeValue() const {
    requireType(Type::range, "rangeValue");
    return range_;
}

void *NSValue::pointerValue() const {
    requireType(Type::pointer, "pointerValue");
    return pointer_;
}

id NSValue::nonretainedObjectValue() const {
    requireType(Type::nonretainedObject, "nonretainedObjectValue");
    return static_cast<id>(pointer_);
}

BOOL NSValue::isEqual(id other) const {
    return isEqualToValue(qb::castOrNil<NSValue>(other));
}

BOOL NSValue::isEqualToValue(NSValue *other) const {
    if (!other || other->type_ != type_)
        return NO;
    return type_ == Type::range ? range_ == other->range_ : pointer_ == other->pointer_;
}

std::uint32_t NSValue::hash() const {
    const auto *const bytes = reinterpret_cast<const char *>(&range_);
    return qb::text::hashBytes(bytes, type_ == Type::range ? sizeof range_ : sizeof pointer_);
}

NSString *NSValue::description() const {
    if (type_ == Type::range)
        return NSStringFromRange(range_);
    char address[2 + 2 * sizeof(void *) + 1];
    std::snprintf(address, sizeof address, "0x%08" PRIxPTR, reinterpret_cast<std::uintptr_t>(pointer_));
    return NSString::stringWith(address);
}
