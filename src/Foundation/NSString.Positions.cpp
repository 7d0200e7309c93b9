// Positions in texts that are not all ASCII.
//
// The place that was asked for last is kept, for two texts at a time, so that going through a text character
// by character, from either end and beside another one, takes time linear in its length.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/Class.h>

#include "Text/Utf8.h"

#include <string>

namespace {

// What is known of the two texts that were asked last. The flags of a text tell whether that holds, so that
// one that has changed or gone since, or another at its address, takes nothing from here.
template <class Fact>
class Notes {
public:
    const Fact *find(const NSString *text) {
        if (texts_[1 - latest_] == text)
            latest_ = 1 - latest_;
        return texts_[latest_] == text ? &facts_[latest_] : nullptr;
    }
    void keep(const NSString *text, Fact fact) {
        if (texts_[latest_] != text)
            latest_ = 1 - latest_;
        texts_[latest_] = text;
        facts_[latest_] = fact;
    }

private:
    const NSString *texts_[2] = {};
    Fact facts_[2] = {};
    unsigned latest_ = 0;
};

struct Spot {
    std::uint32_t unit, byte;
};

constinit Notes<Spot> spots;
constinit Notes<std::uint32_t> lengths;

std::uint32_t unitsOf(const char *from, const char *end) {
    return static_cast<std::uint32_t>(qb::text::utf16Units(from, static_cast<std::size_t>(end - from)));
}

} // namespace

std::uint32_t NSString::length() const {
    if (isAscii())
        return byteLength_;
    const std::uint32_t *const known = flags_ & kHasLength ? lengths.find(this) : nullptr;
    if (known)
        return *known;
    const std::uint32_t length = unitsOf(bytes_, bytes_ + byteLength_);
    lengths.keep(this, length);
    flags_ |= kHasLength;
    return length;
}

NSString::Place NSString::lastPlace() const {
    const Spot *const known = flags_ & kHasPlace ? spots.find(this) : nullptr;
    return known ? Place{known->unit, known->byte} : Place{};
}

NSString::Place NSString::notePlace(Place place) const {
    spots.keep(this, {place.unit, place.byte});
    flags_ |= kHasPlace;
    return place;
}

// The beginning of the character that holds the unit; the end of the text when there are not so many.
NSString::Place NSString::placeOfUnit(std::uint32_t unit) const {
    if (isAscii())
        return {std::min(unit, byteLength_), std::min(unit, byteLength_)};
    Place place = lastPlace();
    if (unit < place.unit / 2)
        place = {};
    while (place.unit > unit) {
        std::uint32_t character = 0;
        const std::size_t used = qb::text::decodeLenientBefore(bytes_, bytes_ + place.byte, &character);
        place.byte -= static_cast<std::uint32_t>(used);
        place.unit -= used == 4 ? 2 : 1;
    }
    bool isSecondHalf = false;
    const auto further = static_cast<std::uint32_t>(qb::text::byteOffsetOfUnit(
        bytes_ + place.byte, byteLength_ - place.byte, unit - place.unit, &isSecondHalf));
    if (further == byteLength_ - place.byte)
        return {length(), byteLength_};
    return notePlace({unit - isSecondHalf, place.byte + further});
}

// `byte` is where a character begins, or the end of the text.
NSString::Place NSString::placeOfByte(std::uint32_t byte) const {
    if (isAscii())
        return {byte, byte};
    if (byte == byteLength_)
        return {length(), byteLength_};
    const Place last = lastPlace();
    if (byte >= last.byte)
        return notePlace({last.unit + unitsOf(bytes_ + last.byte, bytes_ + byte), byte});
    if (byte > last.byte / 2)
        return notePlace({last.unit - unitsOf(bytes_ + byte, bytes_ + last.byte), byte});
    return notePlace({unitsOf(bytes_, bytes_ + byte), byte});
}

std::string_view NSString::viewOfRange(NSRange range, const char *selector) const {
    if (NSMaxRange(range) > length())
        throw NSRangeException(std::string(classObject()->nameView()) + " " + selector +
                               " must have a range inside the text, which has " + std::to_string(length()) +
                               " characters.");
    const std::uint32_t from = placeOfUnit(range.location).byte;
    const std::uint32_t end = placeOfUnit(range.location + range.length).byte;
    return view().substr(from, end - from);
}

NSRange NSString::rangeOfView(std::string_view piece) const {
    const auto from = static_cast<std::uint32_t>(piece.data() - bytes_);
    const std::uint32_t location = placeOfByte(from).unit;
    return {location, placeOfByte(from + static_cast<std::uint32_t>(piece.size())).unit - location};
}

unichar NSString::characterAtIndex(std::uint32_t index) const {
    const Place place = placeOfUnit(index);
    if (place.byte >= byteLength_)
        throw NSRangeException("NSString characterAtIndex: must have an index below " +
                               std::to_string(length()) + ".");
    std::uint32_t character = 0;
    qb::text::decodeLenient(bytes_ + place.byte, bytes_ + byteLength_, &character);
    if (character < 0x10000)
        return static_cast<unichar>(character);
    const std::uint32_t bits = character - 0x10000;
    return static_cast<unichar>(place.unit == index ? 0xD800 + (bits >> 10) : 0xDC00 + (bits & 0x3FF));
}
