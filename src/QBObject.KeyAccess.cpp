// Keys of objects that are no dictionaries: the names of their operations.
#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBBool.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "Foundation/NSObject.Tables.h"

#include <string>
#include <string_view>

namespace {

using qb::Kind;
using qb::Type;
using qb::Value;

constexpr const char *kFile = "src/QBObject.KeyAccess";

std::string_view textOf(id key) {
    const qb::Kept kept(key); // whatever it does for its text
    NSString *const text = key ? key->stringValue() : nullptr;
    return text ? text->view() : "(null)";
}

std::string setterFor(std::string_view key) {
    std::string selector = "set" + std::string(key) + ":";
    if (selector[3] >= 'a' && selector[3] <= 'z')
        selector[3] = static_cast<char>(selector[3] - 'a' + 'A');
    return selector;
}

// Returns the object's operation of that name. Those of the root class are none: they belong to no value, and
// some would take the object's references away.
const qb::Method *accessorOf(const NSObject *object, std::string_view selector, std::uint32_t parameters) {
    // The class, and with it the selectors of its operations, may not have been made yet.
    object->classObject();
    const SEL known = Selector::namedIfKnown(selector); // makes none, for there is no end of keys
    const qb::Method *const method = known ? object->methodForSelector(known) : nullptr;
    const bool isAccessor = method && !method->isClassMethod() && method->owner() != NSObject::cls() &&
                            method->parameterCount() == parameters;
    return isAccessor ? method : nullptr;
}

void raise(int line, int error, const NSObject *object, std::string_view key, NSString *detail) {
    qb::raiseError(kFile, line, error, object->classObject()->name(), NSString::stringWith(key), detail);
}

// --- From values to objects ---

bool hasObject(const Type &type) {
    switch (type.kind) {
    case Kind::integer:
    case Kind::character:
    case Kind::real:
    case Kind::cString:
    case Kind::object:
    case Kind::classObject:
        return true;
    default:
        return false;
    }
}

NSNumber *numberOf(const Value &value, const Type &type) {
    if (type.kind == Kind::real)
        return type.width == 32 ? NSNumber::numberWithFloat(static_cast<float>(value.real()))
                                : NSNumber::numberWithDouble(value.real());
    const std::int64_t integer = value.integer();
    if (type.width == 64)
        return type.isSigned ? NSNumber::numberWithLongLong(integer)
                             : NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(integer));
    return type.isSigned ? NSNumber::numberWithInt(static_cast<std::int32_t>(integer))
                         : NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(integer));
}

id objectOf(const Value &value, const Type &type) {
    if (type.kind == Kind::cString)
        return value.isNull() ? nullptr : NSString::stringWithCString(value.cString());
    if (type.kind != Kind::object && type.kind != Kind::classObject)
        return numberOf(value, type);
    return type.isOwned ? Ref<NSObject>(value.object()).autorelease() : value.object();
}

// --- From objects to values ---

NSNumber *numberIn(id object) {
    if (auto *const boolean = qb::castOrNil<QBBool>(object))
        return NSNumber::numberWithInt(boolean->intValue());
    return object ? object->asNumber() : nullptr;
}

bool takeInteger(NSNumber *number, const Type &type, Value &value) {
    if (!type.isSigned) {
        const std::uint64_t integer = number->unsignedLongLongValue();
        value = integer;
        return integer <= UINT64_MAX >> (64 - type.width) &&
               NSNumber::numberWithUnsignedLongLong(integer)->isEqual(number);
    }
    const std::int64_t integer = number->longLongValue();
    const std::int64_t greatest = INT64_MAX >> (64 - type.width);
    value = integer;
    return integer <= greatest && integer >= -greatest - 1 &&
           NSNumber::numberWithLongLong(integer)->isEqual(number);
}

// Makes `value` what a parameter of that type takes for the object. Returns false when there is nothing.
bool takeObject(id object, const Type &type, Value &value) {
    if (type.kind == Kind::object || type.kind == Kind::classObject) {
        value = object;
        return !object || object->isKindOfClass(type.cls());
    }
    NSNumber *const number = numberIn(object);
    if (number && (type.kind == Kind::integer || type.kind == Kind::character))
        return takeInteger(number, type, value);
    if (!number || type.kind != Kind::real)
        return false;
    if (type.width == 32)
        value = number->floatValue();
    else
        value = number->doubleValue();
    return true;
}

} // namespace

std::span<const qb::Method> qb::tables::objectKeyAccess() {
    static const qb::Method methods[] = {
        qb::method<"objectForKey:">(&NSObject::objectForKey),
        qb::method<"setObject:forKey:">(&NSObject::setObjectForKey),
        qb::method<"removeObjectForKey:">(&NSObject::removeObjectForKey),
    };
    return methods;
}

id NSObject::objectForKey(id key) const {
    const std::string_view name = textOf(key);
    const qb::Method *const getter = accessorOf(this, name, /*parameters=*/0);
    if (getter && hasObject(getter->resultType()))
        return objectOf(getter->invoke(self(), nullptr, 0), getter->resultType());
    raise(__LINE__, qb::kErrorUnknownKey, this, name, NSString::stringWith(name));
    return nullptr;
}

void NSObject::setObjectForKey(id object, id key) {
    const qb::Kept kept(object);         // whatever it does for its number, or the key for its text
    const std::string name(textOf(key)); // the object's operations may change the key
    const std::string selector = setterFor(name);
    const qb::Method *const setter = accessorOf(this, selector, /*parameters=*/1);
    if (!setter)
        return raise(__LINE__, qb::kErrorUnknownKey, this, name, NSString::stringWith(selector));
    Value value;
    if (takeObject(object, setter->parameterType(0), value))
        setter->invoke(this, &value, 1);
    else
        raise(__LINE__, qb::kErrorWrongObjectForKey, this, name,
              object ? object->classObject()->name() : "nil"_ns);
}

void NSObject::removeObjectForKey(id key) {
    setObjectForKey(nullptr, key);
}
