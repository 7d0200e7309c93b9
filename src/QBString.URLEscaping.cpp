// Escapes of URLs, in the library's own manner.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/QBStringAdditions.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Url.h"

#include <cctype>
#include <langinfo.h>
#include <string_view>

namespace {

using qb::text::ByteSet;
using qb::text::kLegalName;

constexpr ByteSet kLegalObjName = ByteSet("_$-").with('a', 'z').with('A', 'Z').with('0', '9');

// Below 128 all locales agree on what is punctuation.
constexpr ByteSet kEscapedAscii = ByteSet("\x7F").with(0, ' ');

// Whether a byte from 128 on is never punctuation in the current locale, which need not be asked for each
// then.
bool hasAsciiPunctuation() {
    const std::string_view encoding = ::nl_langinfo(CODESET);
    return encoding == "UTF-8" || encoding == "ANSI_X3.4-1968";
}

// What is to be escaped in the current locale.
ByteSet escapedBytes() {
    if (hasAsciiPunctuation())
        return kEscapedAscii.with(128, 255);
    ByteSet set = kEscapedAscii;
    for (int byte = 128; byte < 256; ++byte)
        if (!std::ispunct(byte))
            set.add(static_cast<unsigned char>(byte));
    return set;
}

bool isByteIn(int character, const ByteSet &set) {
    return character >= 0 && character < 256 && set.contains(static_cast<unsigned char>(character));
}

} // namespace

int isLegalNameChar(int character) {
    return isByteIn(character, kLegalName);
}

int isLegalObjNameChar(int character) {
    return isByteIn(character, kLegalObjName);
}

std::span<const qb::Method> qb::tables::stringUrlEscaping() {
    static const qb::Method methods[] = {
        qb::method<"urlEscape">(&NSString::urlEscape),
        qb::method<"urlUnEscape">(&NSString::urlUnEscape),
    };
    return methods;
}

NSString *NSString::urlEscape() const {
    const char *const end = bytes_ + byteLength_;
    const ByteSet escaped = isAscii() ? kEscapedAscii : escapedBytes();
    const std::size_t count = qb::text::countIn(bytes_, end, escaped);
    if (count == 0)
        return itself();
    const std::uint64_t length = byteLength_ + std::uint64_t{count} * 2;
    qb::requireLength(length, "NSString urlEscape");
    return initFilled(static_cast<std::size_t>(length),
                      [&](char *target) { qb::text::escapeUrl(bytes_, end, escaped, target); })
        .autorelease();
}

NSString *NSString::urlUnEscape() const {
    const char *const end = bytes_ + byteLength_;
    const char *const mark = qb::text::findIn(bytes_, end, qb::text::kUrlMarks);
    if (mark == end)
        return itself();
    char *text = nullptr;
    Ref<NSString> unescaped = makeUnfilled(byteLength_, text);
    const char *const textEnd = qb::text::unescapeUrl(bytes_, end, text);
    unescaped->endAt(static_cast<std::size_t>(textEnd - text));
    return unescaped.autorelease();
}
