// Strings from other forms of text, and back into buffers.
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

template <class T>
T *checked(T *pointer, const char *selector, const char *what) {
    if (!pointer)
        throw InvalidArgumentException(std::string("NSString ") + selector + " must have " + what +
                                       " not NULL.");
    return pointer;
}

bool isFirstHalf(unichar unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool isSecondHalf(unichar unit) {
    return (unit & 0xFC00) == 0xDC00;
}

std::string textOfUnits(const unichar *units, std::uint32_t length, const char *selector) {
    std::string text;
    if (length != 0)
        checked(units, selector, "characters that are");
    for (std::uint32_t i = 0; i < length; ++i) {
        std::uint32_t character = units[i];
        if (isFirstHalf(units[i]) && i + 1 < length && isSecondHalf(units[i + 1]))
            character = 0x10000 + ((character & 0x3FF) << 10) + (units[++i] & 0x3FFu);
        else if (isFirstHalf(units[i]) || isSecondHalf(units[i]))
            character = kReplacement;
        char bytes[qb::text::kLongestSequence];
        text.append(bytes, qb::text::encode(character, bytes));
    }
    return text;
}

std::string_view viewOfBytes(const void *bytes, std::uint32_t length) {
    if (length == 0)
        return {};
    return {static_cast<const char *>(checked(bytes, "initWithBytes:length:", "bytes that are")), length};
}

std::string_view viewOfData(NSData *data) {
    return data ? viewOfBytes(data->bytes(), data->length()) : std::string_view();
}

std::string_view viewOfUtf8(const char *text, const char *selector) {
    return checked(text, selector, "a C string that is");
}

// The class operations, which make a string of the class that was asked.
NSString *stringWithUtf8OfClass(Class *asked, const char *text) {
    return NSString::initOfClass(asked, viewOfUtf8(text, "stringWithUTF8String:")).autorelease();
}
Ref<NSString> initWithUtf8OfClass(Class *asked, const char *text) {
    return NSString::initOfClass(asked, viewOfUtf8(text, "initWithUTF8String:"));
}
NSString *stringWithCharactersOfClass(Class *asked, const unichar *characters, std::uint32_t length) {
    return NSString::initOfClass(asked, textOfUnits(characters, length, "stringWithCharacters:length:"))
        .autorelease();
}
Ref<NSString> initWithCharactersOfClass(Class *asked, const unichar *characters, std::uint32_t length) {
    return NSString::initOfClass(asked, textOfUnits(characters, length, "initWithCharacters:length:"));
}
Ref<NSString> initWithBytesOfClass(Class *asked, const void *bytes, std::uint32_t length) {
    return NSString::initOfClass(asked, viewOfBytes(bytes, length));
}
Ref<NSString> initWithDataOfClass(Class *asked, NSData *data) {
    return NSString::initOfClass(asked, viewOfData(data));
}

} // namespace

std::span<const qb::Method> qb::tables::stringCreation() {
    using Length = std::uint32_t;
    static const qb::Method methods[] = {
        qb::classMethod<"stringWithUTF8String:">(&stringWithUtf8OfClass),
        qb::classMethod<"initWithUTF8String:">(&initWithUtf8OfClass),
        qb::classMethod<"stringWithCharacters:length:">(&stringWithCharactersOfClass),
        qb::classMethod<"initWithCharacters:length:">(&initWithCharactersOfClass),
        qb::classMethod<"initWithBytes:length:">(&initWithBytesOfClass),
        qb::classMethod<"initWithData:">(&initWithDataOfClass),
        qb::method<"UTF8String">(&NSString::UTF8String),
        qb::method<"getCString:", void(char *)>(&NSString::getCString),
        qb::method<"getCString:maxLength:", void(char *, Length)>(&NSString::getCString),
        qb::method<"getCString:maxLength:range:remainingRange:", void(char *, Length, NSRange, NSRange *)>(
            &NSString::getCString),
        qb::method<"getCharacters:", void(unichar *)>(&NSString::getCharacters),
        qb::method<"getCharacters:range:", void(unichar *, NSRange)>(&NSString::getCharacters),
    };
    return methods;
}

NSString *NSString::stringWithUTF8String(const char *text) {
    return stringWith(viewOfUtf8(text, "stringWithUTF8String:"));
}

Ref<NSString> NSString::initWithUTF8String(const char *text) {
    return initWith(viewOfUtf8(text, "initWithUTF8String:"));
}

Ref<NSString> NSString::initWithCharacters(const unichar *characters, std::uint32_t length) {
    return initWith(textOfUnits(characters, length, "initWithCharacters:length:"));
}

Ref<NSString> NSString::initWithBytes(const void *bytes, std::uint32_t length) {
    return initWith(viewOfBytes(bytes, length));
}

Ref<NSString> NSString::initWithData(NSData *data) {
    return initWith(viewOfData(data));
}

NSMutableString *NSMutableString::stringWithUTF8String(const char *text) {
    return stringWith(viewOfUtf8(text, "stringWithUTF8String:"));
}

Ref<NSMutableString> NSMutableString::initWithUTF8String(const char *text) {
    return initWith(viewOfUtf8(text, "initWithUTF8String:"));
}

Ref<NSMutableString> NSMutableString::initWithCString(const char *text) {
    return initWithString(NSString::initWithCString(text).autorelease());
}

Ref<NSMutableString> NSMutableString::initWithCString(const char *bytes, std::uint32_t length) {
    return initWithString(NSString::initWithCString(bytes, length).autorelease());
}

Ref<NSMutableString> NSMutableString::initWithCharacters(const unichar *characters, std::uint32_t length) {
    return initWith(textOfUnits(characters, length, "initWithCharacters:length:"));
}

Ref<NSMutableString> NSMutableString::initWithBytes(const void *bytes, std::uint32_t length) {
    return initWith(viewOfBytes(bytes, length));
}

Ref<NSMutableString> NSMutableString::initWithData(NSData *data) {
    return initWith(viewOfData(data));
}

NSData *NSString::asData() const {
    return NSData::dataWith(std::as_bytes(std::span(view())));
}

void NSString::getCString(char *buffer) const {
    std::memcpy(checked(buffer, "getCString:", "a buffer that is"), bytes_, byteLength_ + std::size_t{1});
}

void NSString::getCString(char *buffer, std::uint32_t maxLength) const {
    getCString(buffer, maxLength, {0, length()}, nullptr);
}

void NSString::getCString(char *buffer, std::uint32_t maxLength, NSRange range,
                          NSRange *remainingRange) const {
    constexpr const char *kSelector = "getCString:maxLength:range:remainingRange:";
    checked(buffer, kSelector, "a buffer that is");
    const std::string_view wanted = viewOfRange(range, kSelector);
    std::size_t copied = std::min<std::size_t>(maxLength, wanted.size());
    const char *const end = wanted.data() + wanted.size();
    while (!qb::text::isCharacterStart(wanted.data(), end, wanted.data() + copied))
        --copied;
    std::memcpy(buffer, wanted.data(), copied);
    buffer[copied] = '\0';
    if (remainingRange)
        *remainingRange = rangeOfView(wanted.substr(copied));
}

void NSString::getCharacters(unichar *buffer) const {
    getCharacters(buffer, {0, length()});
}

void NSString::getCharacters(unichar *buffer, NSRange range) const {
    checked(buffer, "getCharacters:range:", "a buffer that is");
    viewOfRange(range, "getCharacters:range:"); // for its exception; a range may cut a pair here
    const Place place = placeOfUnit(range.location);
    const char *position = bytes_ + place.byte;
    unichar *const last = buffer + range.length;
    std::uint32_t skipped = range.location - place.unit; // 1: begins inside a pair
    // A subclass may answer a length that is none of the text's.
    while (buffer != last && position != bytes_ + byteLength_) {
        std::uint32_t character = 0;
        position += qb::text::decodeLenient(position, bytes_ + byteLength_, &character);
        if (character < 0x10000) {
            *buffer++ = static_cast<unichar>(character);
            continue;
        }
        const std::uint32_t bits = character - 0x10000;
        if (!skipped)
            *buffer++ = static_cast<unichar>(0xD800 + (bits >> 10));
        if (buffer != last)
            *buffer++ = static_cast<unichar>(0xDC00 + (bits & 0x3FF));
        skipped = 0;
    }
}
