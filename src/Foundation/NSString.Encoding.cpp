// Texts in other encodings.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Text/Utf8.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t kEncodings[] = {NSASCIIStringEncoding, NSUTF8StringEncoding,
                                        NSISOLatin1StringEncoding, NSUnicodeStringEncoding};
constexpr unichar kByteOrderMark = 0xFEFF;
constexpr unichar kSwappedByteOrderMark = 0xFFFE;

// The first code point that the encoding has not; 0 for one that is not known.
std::uint32_t limitOf(std::uint32_t encoding) {
    switch (encoding) {
    case NSASCIIStringEncoding:
        return 0x80;
    case NSISOLatin1StringEncoding:
        return 0x100;
    case NSUTF8StringEncoding:
    case NSUnicodeStringEncoding:
        return 0x110000;
    default:
        return 0;
    }
}

bool isKnown(std::uint32_t encoding) {
    return limitOf(encoding) != 0;
}

void appendUnit(std::string &bytes, std::uint32_t unit) {
    bytes += static_cast<char>(unit);
    bytes += static_cast<char>(unit >> 8);
}

void appendUnits(std::string &bytes, std::uint32_t character) {
    if (character < 0x10000)
        return appendUnit(bytes, character);
    appendUnit(bytes, 0xD800 + ((character - 0x10000) >> 10));
    appendUnit(bytes, 0xDC00 + ((character - 0x10000) & 0x3FF));
}

// Encodes each character, "?" for those that the encoding has not. Returns whether there were none.
bool encodeAll(std::string_view text, std::uint32_t encoding, std::string &bytes) {
    const std::uint32_t limit = limitOf(encoding);
    bool isComplete = true;
    for (const char *position = text.data(), *end = position + text.size(); position != end;) {
        std::uint32_t character = 0;
        position += qb::text::decodeLenient(position, end, &character);
        if (character >= limit) {
            character = '?';
            isComplete = false;
        }
        if (encoding == NSUnicodeStringEncoding)
            appendUnits(bytes, character);
        else
            bytes += static_cast<char>(character);
    }
    return isComplete;
}

std::string textOfLatin1(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char sequence[qb::text::kLongestSequence];
        text.append(sequence, qb::text::encode(static_cast<unsigned char>(byte), sequence));
    }
    return text;
}

// The units in the order of the byte-order mark, which is left out; without one the low byte is the first.
std::vector<unichar> unitsOf(std::string_view bytes) {
    std::vector<unichar> units(bytes.size() / 2);
    std::memcpy(units.data(), bytes.data(), bytes.size());
    if (units.front() == kSwappedByteOrderMark)
        for (unichar &unit : units)
            unit = static_cast<unichar>(unit << 8 | unit >> 8);
    if (units.front() == kByteOrderMark)
        units.erase(units.begin());
    return units;
}

Ref<NSString> initWithDataOfClass(Class *asked, NSData *data, std::uint32_t encoding) {
    const std::string_view bytes =
        data && data->length() ? std::string_view(static_cast<const char *>(data->bytes()), data->length())
                               : std::string_view();
    if (!isKnown(encoding))
        return nullptr;
    if (bytes.empty() || encoding == NSASCIIStringEncoding)
        return qb::text::isAscii(bytes.data(), bytes.size()) ? NSString::initOfClass(asked, bytes) : nullptr;
    if (encoding == NSISOLatin1StringEncoding)
        return NSString::initOfClass(asked, textOfLatin1(bytes));
    if (encoding == NSUTF8StringEncoding)
        return qb::text::validPrefix(bytes.data(), bytes.size()) == bytes.size()
                   ? NSString::initOfClass(asked, bytes)
                   : nullptr;
    if (bytes.size() % 2 != 0)
        return nullptr;
    const std::vector<unichar> units = unitsOf(bytes);
    const Ref<NSString> text =
        NSString::initWithCharacters(units.data(), static_cast<std::uint32_t>(units.size()));
    return NSString::initOfClass(asked, text->view());
}

} // namespace

std::span<const qb::Method> qb::tables::stringEncoding() {
    using Encoding = std::uint32_t;
    static const qb::Method methods[] = {
        qb::classMethod<"availableStringEncodings">(&NSString::availableStringEncodings),
        qb::classMethod<"defaultCStringEncoding">(&NSString::defaultCStringEncoding),
        qb::classMethod<"initWithData:encoding:">(&initWithDataOfClass),
        qb::method<"canBeConvertedToEncoding:">(&NSString::canBeConvertedToEncoding),
        qb::method<"dataUsingEncoding:", NSData *(Encoding)>(&NSString::dataUsingEncoding),
        qb::method<"dataUsingEncoding:allowLossyConversion:", NSData *(Encoding, BOOL)>(
            &NSString::dataUsingEncoding),
    };
    return methods;
}

Ref<NSString> NSString::initWithData(NSData *data, std::uint32_t encoding) {
    return initWithDataOfClass(cls(), data, encoding);
}

Ref<NSMutableString> NSMutableString::initWithData(NSData *data, std::uint32_t encoding) {
    return static_cast<NSMutableString *>(initWithDataOfClass(cls(), data, encoding).get());
}

NSArray *NSString::availableStringEncodings() {
    NSMutableArray *const encodings = NSMutableArray::array();
    for (const std::uint32_t encoding : kEncodings)
        encodings->addObject(NSNumber::numberWithUnsignedInt(encoding));
    return encodings;
}

BOOL NSString::canBeConvertedToEncoding(std::uint32_t encoding) const {
    std::string bytes;
    return isKnown(encoding) && (encoding == NSUTF8StringEncoding || encodeAll(view(), encoding, bytes));
}

NSData *NSString::dataUsingEncoding(std::uint32_t encoding, BOOL allowLossyConversion) const {
    if (!isKnown(encoding))
        return nullptr;
    if (encoding == NSUTF8StringEncoding)
        return asData();
    std::string bytes;
    if (encoding == NSUnicodeStringEncoding)
        appendUnit(bytes, kByteOrderMark);
    if (!encodeAll(view(), encoding, bytes) && !allowLossyConversion)
        return nullptr;
    return NSData::dataWith(std::as_bytes(std::span(bytes)));
}
