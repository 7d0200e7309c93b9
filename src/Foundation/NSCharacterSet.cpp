#include <QBFoundation/Foundation/NSCharacterSet.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Required.h"
#include "Text/Hash.h"
#include "Text/Search.h"
#include "Text/Unicode.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

using qb::text::kFirstMalformed;

// By kind.
constexpr bool (*kTests[])(std::uint32_t character) = {
    nullptr,
    qb::text::isWhitespace,
    qb::text::isWhitespaceOrNewline,
    qb::text::isNewline,
    qb::text::isDecimalDigit,
    qb::text::isLetter,
    qb::text::isLetterOrNumber,
    qb::text::isUppercaseLetter,
    qb::text::isLowercaseLetter,
    qb::text::isPunctuation,
    qb::text::isSymbol,
    qb::text::isControl,
    qb::text::isMark,
    qb::text::isTitleCaseLetter,
};

bool isOnlyInSecond(bool isInFirst, bool isInSecond) {
    return isInSecond && !isInFirst;
}

} // namespace

Class *NSCharacterSet::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"whitespaceCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::whitespace); }),
        qb::classMethod<"whitespaceAndNewlineCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::whitespaceAndNewline); }),
        qb::classMethod<"newlineCharacterSet">(+[](Class *asked) { return named(asked, Kind::newline); }),
        qb::classMethod<"decimalDigitCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::decimalDigit); }),
        qb::classMethod<"letterCharacterSet">(+[](Class *asked) { return named(asked, Kind::letter); }),
        qb::classMethod<"alphanumericCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::alphanumeric); }),
        qb::classMethod<"uppercaseLetterCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::uppercaseLetter); }),
        qb::classMethod<"lowercaseLetterCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::lowercaseLetter); }),
        qb::classMethod<"punctuationCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::punctuation); }),
        qb::classMethod<"symbolCharacterSet">(+[](Class *asked) { return named(asked, Kind::symbol); }),
        qb::classMethod<"controlCharacterSet">(+[](Class *asked) { return named(asked, Kind::control); }),
        qb::classMethod<"nonBaseCharacterSet">(+[](Class *asked) { return named(asked, Kind::nonBase); }),
        qb::classMethod<"capitalizedLetterCharacterSet">(
            +[](Class *asked) { return named(asked, Kind::capitalizedLetter); }),
        qb::maker<"characterSetWithCharactersInString:">(&NSCharacterSet::setUpWithCharactersInString),
        qb::maker<"characterSetWithRange:">(&NSCharacterSet::setUpWithRange),
        qb::maker<"characterSetWithBitmapRepresentation:">(&NSCharacterSet::setUpWithBitmapRepresentation),
        qb::method<"invertedSet">(&NSCharacterSet::invertedSet),
        qb::method<"characterIsMember:">(&NSCharacterSet::characterIsMember),
        qb::method<"longCharacterIsMember:">(&NSCharacterSet::longCharacterIsMember),
        qb::method<"isSupersetOfSet:">(&NSCharacterSet::isSupersetOfSet),
        qb::method<"hasMemberInPlane:">(&NSCharacterSet::hasMemberInPlane),
        qb::method<"bitmapRepresentation">(&NSCharacterSet::bitmapRepresentation),
        qb::initialiser<"initWithCoder:">(&NSCharacterSet::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSCharacterSet::encodeWithCoder),
    };
    static Class *const self =
        new Class("NSCharacterSet", NSObject::cls(), methods, qb::construct<NSCharacterSet>,
                  {"NSCopying", "NSMutableCopying", "NSCoding"});
    return self;
}

// --- Classes, each made on first use and kept ---

NSCharacterSet *NSCharacterSet::shared(Kind kind) {
    static constinit std::array<NSCharacterSet *, kKinds> sets{};
    NSCharacterSet *&set = sets[static_cast<std::size_t>(kind)];
    if (!set) {
        set = new NSCharacterSet;
        set->makeImmortal();
        set->kind_ = kind;
        set->learnAscii();
    }
    return set;
}

NSCharacterSet *NSCharacterSet::named(Class *asked, Kind kind) {
    if (asked == cls())
        return shared(kind);
    auto *const set = static_cast<NSCharacterSet *>(asked->construct().autorelease());
    set->copyMembers(*shared(kind));
    return set;
}

NSCharacterSet *NSCharacterSet::whitespaceCharacterSet() {
    return shared(Kind::whitespace);
}

NSCharacterSet *NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    return shared(Kind::whitespaceAndNewline);
}

NSCharacterSet *NSCharacterSet::newlineCharacterSet() {
    return shared(Kind::newline);
}

NSCharacterSet *NSCharacterSet::decimalDigitCharacterSet() {
    return shared(Kind::decimalDigit);
}

NSCharacterSet *NSCharacterSet::letterCharacterSet() {
    return shared(Kind::letter);
}

NSCharacterSet *NSCharacterSet::alphanumericCharacterSet() {
    return shared(Kind::alphanumeric);
}

NSCharacterSet *NSCharacterSet::uppercaseLetterCharacterSet() {
    return shared(Kind::uppercaseLetter);
}

NSCharacterSet *NSCharacterSet::lowercaseLetterCharacterSet() {
    return shared(Kind::lowercaseLetter);
}

NSCharacterSet *NSCharacterSet::punctuationCharacterSet() {
    return shared(Kind::punctuation);
}

NSCharacterSet *NSCharacterSet::symbolCharacterSet() {
    return shared(Kind::symbol);
}

NSCharacterSet *NSCharacterSet::controlCharacterSet() {
    return shared(Kind::control);
}

NSCharacterSet *NSCharacterSet::nonBaseCharacterSet() {
    return shared(Kind::nonBase);
}

NSCharacterSet *NSCharacterSet::capitalizedLetterCharacterSet() {
    return shared(Kind::capitalizedLetter);
}

// --- Other sets ---

NSCharacterSet *NSCharacterSet::characterSetWithCharactersInString(NSString *string) {
    return qb::init<NSCharacterSet>(&NSCharacterSet::setUpWithCharactersInString, string).autorelease();
}

NSCharacterSet *NSCharacterSet::characterSetWithBitmapRepresentation(NSData *data) {
    return qb::init<NSCharacterSet>(&NSCharacterSet::setUpWithBitmapRepresentation, data).autorelease();
}

NSCharacterSet *NSCharacterSet::characterSetWithRange(NSRange range) {
    return qb::init<NSCharacterSet>(&NSCharacterSet::setUpWithRange, range).autorelease();
}

BOOL NSCharacterSet::setUpWithCharactersInString(NSString *string) {
    qb::required(string, "NSCharacterSet characterSetWithCharactersInString:", "a string");
    const std::string_view text = string->view();
    std::vector<std::uint32_t> characters;
    for (const char *position = text.data(), *end = position + text.size(); position != end;) {
        const std::uint32_t character = qb::text::takeSymbol(position, end, /*ignoresCase=*/false);
        if (character < kFirstMalformed)
            characters.push_back(character);
    }
    std::sort(characters.begin(), characters.end());
    Edges edges;
    for (const std::uint32_t character : characters) {
        if (edges.empty() || edges.back() < character)
            edges.insert(edges.end(), {character, character + 1});
        else if (edges.back() == character)
            ++edges.back();
    }
    setEdges(edges);
    return YES;
}

BOOL NSCharacterSet::setUpWithRange(NSRange range) {
    if (NSMaxRange(range) > kFirstMalformed)
        throw InvalidArgumentException(
            "NSCharacterSet characterSetWithRange: must have a range that ends before 0x110000.");
    setEdges(range.length == 0 ? Edges() : Edges{range.location, range.location + range.length});
    return YES;
}

NSCharacterSet *NSCharacterSet::invertedSet() const {
    Ref<NSCharacterSet> set = immutableCopy();
    set->invertMembers();
    return set.autorelease();
}

Ref<NSCharacterSet> NSCharacterSet::immutableCopy() const {
    auto set = Ref<NSCharacterSet>::adopt(new NSCharacterSet);
    set->copyMembers(*this);
    return set;
}

void NSCharacterSet::copyMembers(const NSCharacterSet &other) {
    kind_ = other.kind_;
    ranges_ = other.ranges_;
    isInverted_ = other.isInverted_;
    ascii_ = other.ascii_;
}

void NSCharacterSet::invertMembers() {
    isInverted_ = !isInverted_;
    learnAscii();
}

NSCharacterSet::Edges NSCharacterSet::combined(const Edges &a, const Edges &b, bool (*holds)(bool, bool)) {
    Edges edges;
    for (std::size_t i = 0, j = 0; i < a.size() || j < b.size();) {
        const std::uint32_t place =
            std::min(i < a.size() ? a[i] : UINT32_MAX, j < b.size() ? b[j] : UINT32_MAX);
        i += i < a.size() && a[i] == place;
        j += j < b.size() && b[j] == place;
        const bool isInside = edges.size() % 2 != 0;
        if (holds(i % 2 != 0, j % 2 != 0) != isInside)
            edges.push_back(place);
    }
    return edges;
}

// What is not in the set, bytes that are no valid UTF-8 included.
NSCharacterSet::Edges NSCharacterSet::others(const Edges &edges) {
    return combined(edges, {0, kFirstMalformed + 1}, isOnlyInSecond);
}

NSCharacterSet::Edges NSCharacterSet::edgesOf(const NSCharacterSet &set) {
    Edges edges;
    for (const NSRange range : set.ranges_)
        edges.insert(edges.end(), {range.location, range.location + range.length});
    for (std::uint32_t character = 0; set.kind_ != Kind::listed && character <= kFirstMalformed; ++character)
        if (set.isListed(character) != (edges.size() % 2 != 0))
            edges.push_back(character);
    return set.isInverted_ ? others(edges) : edges;
}

void NSCharacterSet::setEdges(const Edges &edges) {
    const bool isInverted = !edges.empty() && edges.back() > kFirstMalformed;
    const Edges listed = isInverted ? others(edges) : edges;
    std::vector<NSRange> ranges; // the set stays as it was when there is no memory for them
    for (std::size_t i = 0; i < listed.size(); i += 2)
        ranges.push_back({listed[i], listed[i + 1] - listed[i]});
    isInverted_ = isInverted;
    kind_ = Kind::listed;
    ranges_.swap(ranges);
    learnAscii();
}

// --- Membership ---

void NSCharacterSet::learnAscii() {
    ascii_ = {};
    for (std::uint32_t character = 0; character < 128; ++character)
        if (isListed(character) != isInverted_)
            ascii_[character / 64] |= std::uint64_t{1} << (character % 64);
}

bool NSCharacterSet::isListed(std::uint32_t character) const {
    static_assert(std::size(kTests) == kKinds);
    if (kind_ != Kind::listed)
        return kTests[static_cast<std::size_t>(kind_)](character);
    const auto behind =
        std::upper_bound(ranges_.begin(), ranges_.end(), character,
                         [](std::uint32_t code, const NSRange &range) { return code < range.location; });
    return behind != ranges_.begin() && NSLocationInRange(character, behind[-1]);
}

BOOL NSCharacterSet::isEqual(id other) const {
    const auto *const set = qb::castOrNil<NSCharacterSet>(other);
    if (!set || ascii_ != set->ascii_)
        return NO;
    const bool areMadeAlike =
        kind_ == set->kind_ && isInverted_ == set->isInverted_ && ranges_ == set->ranges_;
    return areMadeAlike || edgesOf(*this) == edgesOf(*set);
}

BOOL NSCharacterSet::isSupersetOfSet(NSCharacterSet *other) const {
    return !other || combined(edgesOf(*this), edgesOf(*other), isOnlyInSecond).empty();
}

std::uint32_t NSCharacterSet::hashOfEdges() const {
    const Edges edges = edgesOf(*this);
    return qb::text::hashBytes(reinterpret_cast<const char *>(edges.data()), edges.size() * sizeof edges[0]);
}

// All characters must be looked through for the edges of a class, which is done once.
std::uint32_t NSCharacterSet::hash() const {
    static constinit std::uint32_t hashes[kKinds][2]{}; // 0: not known
    if (kind_ == Kind::listed)
        return hashOfEdges();
    std::uint32_t &known = hashes[static_cast<std::size_t>(kind_)][isInverted_];
    if (known == 0)
        known = hashOfEdges();
    return known;
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

Ref<NSObject> NSCharacterSet::mutableCopyWithZone(void *) const {
    return mutableCopy();
}

Ref<NSMutableCharacterSet> NSCharacterSet::mutableCopy() const {
    Ref<NSMutableCharacterSet> copy = NSMutableCharacterSet::init();
    copy->copyMembers(*this);
    return copy;
}
