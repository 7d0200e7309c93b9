#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"

Class *NSMutableString::cls() {
    static const qb::Method methods[] = {
        qb::maker<"stringWithCapacity:">(&NSMutableString::setUpWithCapacity),
        qb::initialiser<"initWithCapacity:">(&NSMutableString::setUpWithCapacity),
        qb::method<"appendString:">(&NSMutableString::appendString),
        qb::method<"setString:">(&NSMutableString::setString),
        qb::method<"insertString:atIndex:">(&NSMutableString::insertString),
        qb::method<"deleteCharactersInRange:">(&NSMutableString::deleteCharactersInRange),
        qb::method<"replaceCharactersInRange:withString:">(&NSMutableString::replaceCharactersInRange),
    };
    static Class *const self =
        new Class("NSMutableString", NSString::cls(),
                  {methods, qb::tables::mutableStringReplacing(), qb::tables::mutableStringFormat(),
                   qb::tables::mutableStringRestrictedFormat()},
                  qb::construct<NSMutableString>);
    return self;
}

Ref<NSMutableString> NSMutableString::initWith(std::string_view bytes) {
    auto string = Ref<NSMutableString>::adopt(new NSMutableString);
    string->append(bytes);
    return string;
}

Ref<NSMutableString> NSMutableString::initWithCapacity(std::uint32_t capacity) {
    return qb::init<NSMutableString>(&NSMutableString::setUpWithCapacity, capacity);
}

BOOL NSMutableString::setUpWithCapacity(std::uint32_t capacity) {
    reserve(capacity);
    return YES;
}

Ref<NSMutableString> NSMutableString::initWithString(NSString *other) {
    return initWith(other ? other->view() : std::string_view());
}

NSMutableString *NSMutableString::stringWithString(NSString *other) {
    return initWithString(other).autorelease();
}

NSMutableString *NSMutableString::stringWithCString(const char *text) {
    return initWithString(NSString::stringWithCString(text)).autorelease();
}

NSMutableString *NSMutableString::stringWithCString(const char *bytes, std::uint32_t length) {
    return initWithString(NSString::stringWithCString(bytes, length)).autorelease();
}

void NSMutableString::appendString(NSString *string) {
    if (string)
        append(string->view());
}

void NSMutableString::append(std::string_view bytes) {
    replaceBytes(byteLength_, 0, bytes);
}

void NSMutableString::setString(NSString *string) {
    replaceBytes(0, byteLength_, string ? string->view() : std::string_view());
}

void NSMutableString::replaceCharactersInRange(NSRange range, NSString *withString) {
    replaceRange(range, withString, "replaceCharactersInRange:withString:");
}

void NSMutableString::insertString(NSString *string, std::uint32_t atIndex) {
    replaceRange({atIndex, 0}, string, "insertString:atIndex:");
}

void NSMutableString::deleteCharactersInRange(NSRange range) {
    replaceRange(range, nullptr, "deleteCharactersInRange:");
}

void NSMutableString::replaceRange(NSRange range, NSString *by, const char *selector) {
    const std::string_view piece = viewOfRange(range, selector);
    replaceBytes(static_cast<std::uint32_t>(piece.data() - bytes_), static_cast<std::uint32_t>(piece.size()),
                 by ? by->view() : std::string_view());
}

Ref<NSObject> NSMutableString::copyWithZone(void *) const {
    return NSString::initWith(view());
}

// What is handed out must not change when the string does.
NSString *NSMutableString::description() const {
    return NSString::stringWith(view());
}

NSString *NSMutableString::stringValue() const {
    return NSString::stringWith(view());
}
