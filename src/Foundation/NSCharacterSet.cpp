#include <QBFoundation/Foundation/NSCharacterSet.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Text/Search.h"
#include "Text/Unicode.h"
#include "Text/Utf8.h"

#include <algorithm>

namespace {

using qb::text::kFirstMalformed;

} // namespace

Class *NSCharacterSet::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"whitespaceCharacterSet">(&NSCharacterSet::whitespaceCharacterSet),
        qb::classMethod<"whitespaceAndNewlineCharacterSet">(
            &NSCharacterSet::whitespaceAndNewlineCharacterSet),
        qb::classMethod<"newlineCharacterSet">(&NSCharacterSet::newlineCharacterSet),
        qb::classMethod<"decimalDigitCharacterSet">(&NSCharacterSet::decimalDigitCharacterSet),
        qb::classMethod<"letterCharacterSet">(&NSCharacterSet::letterCharacterSet),
        qb::classMethod<"alphanumericCharacterSet">(&NSCharacterSet::alphanumericCharacterSet),
        qb::classMethod<"uppercaseLetterCharacterSet">(&NSCharacterSet::uppercaseLetterCharacterSet),
        qb::classMethod<"lowercaseLetterCharacterSet">(&NSCharacterSet::lowercaseLetterCharacterSet),
        qb::classMethod<"punctuationCharacterSet">(&NSCharacterSet::punctuationCharacterSet),
        qb::maker<"characterSetWithCharactersInString:">(&NSCharacterSet::setUpWithCharactersInString),
        qb::maker<"characterSetWithRange:">(&NSCharacterSet::setUpWithRange),
        qb::method<"invertedSet">(&NSCharacterSet::invertedSet),
        qb::method<"characterIsMember:">(&NSCharacterSet::characterIsMember),
        qb::method<"longCharacterIsMember:">(&NSCharacterSet::longCharacterIsMember),
    };
    static Class *const self =
        new Class("NSCharacterSet", NSObject::cls(), methods, qb::construct<NSCharacterSet>, {"NSCopying"});
    return self;
}

// --- Classes, each made on first use and kept ---

NSCharacterSet *NSCharacterSet::sharedWithTest(Test test) {
    auto *const set = new NSCharacterSet;
    set->makeImmortal();
    set->test_ = test;
    set->learnAscii();
    return set;
}

NSCharacterSet *NSCharacterSet::whitespaceCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isWhitespace);
    return set;
}

NSCharacterSet *NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isWhitespaceOrNewline);
    return set;
}

NSCharacterSet *NSCharacterSet::newlineCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isNewline);
    return set;
}

NSCharacterSet *NSCharacterSet::decimalDigitCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isDecimalDigit);
    return set;
}

NSCharacterSet *NSCharacterSet::letterCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isLetter);
    return set;
}

NSCharacterSet *NSCharacterSet::alphanumericCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isLetterOrNumber);
    return set;
}

NSCharacterSet *NSCharacterSet::uppercaseLetterCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isUppercaseLetter);
    return set;
}

NSCharacterSet *NSCharacterSet::lowercaseLetterCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isLowercaseLetter);
    return set;
}

NSCharacterSet *NSCharacterSet::punctuationCharacterSet() {
    static NSCharacterSet *const set = sharedWithTest(qb::text::isPunctuation);
    return set;
}

// --- Other sets ---

NSCharacterSet *NSCharacterSet::characterSetWithCharactersInString(NSString *string) {
    return qb::init<NSCharacterSet>(&NSCharacterSet::setUpWithCharactersInString, string).autorelease();
}

NSCharacterSet *NSCharacterSet::characterSetWithRange(NSRange range) {
    return qb::init<NSCharacterSet>(&NSCharacterSet::setUpWithRange, range).autorelease();
}

BOOL NSCharacterSet::setUpWithCharactersInString(NSString *string) {
    if (!string)
        throw InvalidArgumentException(
            "NSCharacterSet characterSetWithCharactersInString: must have a string that is not nil.");
    const std::string_view text = string->view();
    std::vector<std::uint32_t> characters;
    for (const char *position = text.data(), *end = position + text.size(); position != end;) {
        const std::uint32_t character = qb::text::takeSymbol(position, end, /*ignoresCase=*/false);
        if (character < kFirstMalformed)
            characters.push_back(character);
    }
    std::sort(characters.begin(), characters.end());
    for (const std::uint32_t character : characters) {
        if (ranges_.empty() || NSMaxRange(ranges_.back()) < character)
            ranges_.push_back({character, 1});
        else if (NSMaxRange(ranges_.back()) == character)
            ++ranges_.back().length;
    }
    learnAscii();
    return YES;
}

BOOL NSCharacterSet::setUpWithRange(NSRange range) {
    if (NSMaxRange(range) > kFirstMalformed)
        throw InvalidArgumentException(
            "NSCharacterSet characterSetWithRange: must have a range that ends before 0x110000.");
    if (range.length != 0)
        ranges_.push_back(range);
    learnAscii();
    return YES;
}

NSCharacterSet *NSCharacterSet::invertedSet() const {
    auto set = Ref<NSCharacterSet>::adopt(new NSCharacterSet);
    set->test_ = test_;
    set->ranges_ = ranges_;
    set->isInverted_ = !isInverted_;
    set->learnAscii();
    return set.autorelease();
}

// --- Membership ---

void NSCharacterSet::learnAscii() {
    for (std::uint32_t character = 0; character < 128; ++character)
        if (isListed(character) != isInverted_)
            ascii_[character / 64] |= std::uint64_t{1} << (character % 64);
}

bool NSCharacterSet::isListed(std::uint32_t character) const {
    if (test_)
        return test_(character);
    const auto behind =
        std::upper_bound(ranges_.begin(), ranges_.end(), character,
                         [](std::uint32_t code, const NSRange &range) { return code < range.location; });
    return behind != ranges_.begin() && NSLocationInRange(character, behind[-1]);
}

BOOL NSCharacterSet::longCharacterIsMember(std::uint32_t character) const {
    if (character < 128)
        return ascii_[character / 64] >> (character % 64) & 1;
    return isListed(character) != isInverted_;
}

bool NSCharacterSet::holdsCharacterAt(const char *position, const char *end, std::size_t &used) const {
    const char *next = position;
    const std::uint32_t character = qb::text::takeSymbol(next, end, /*ignoresCase=*/false);
    used = static_cast<std::size_t>(next - position);
    return longCharacterIsMember(character);
}
