// Texts as lists of characters, the plain way: what the strings' positions are compared with.
#ifndef QB_TESTS_FOUNDATION_UNITMODEL_H
#define QB_TESTS_FOUNDATION_UNITMODEL_H

#include "Text/RandomText.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

/// A text decoded leniently: the bytes of each character, and the UTF-16 units of all.
class UnitModel {
public:
    explicit UnitModel(const std::string &text) {
        for (std::size_t position = 0; position < text.size();) {
            const std::string character =
                text.substr(position, std::max<std::size_t>(wellFormedLength(text, position), 1));
            characters.push_back(character);
            addUnits(character);
            position += character.size();
        }
        starts.push_back(static_cast<std::uint32_t>(units.size()));
    }

    /// A random text, malformed in places, in which short texts are found now and then.
    static std::string randomText(Random &random, std::size_t most) {
        static const std::string kPieces[] = {"a",    "b",    "B",    "\xC3\xA9", "\xC3",
                                              "\xA9", "\x80", "\xF0", "\x9F\x98", "\x80\x80",
                                              "€",    "😀",    "a",    "aa",       std::string(1, '\0')};
        return ::randomText(random, random.below(most + 1), kPieces);
    }

    std::size_t count() const { return characters.size(); }

    std::string bytes(std::size_t from, std::size_t end) const {
        std::string result;
        for (; from < end; ++from)
            result += characters[from];
        return result;
    }

    /// The character that holds the unit; their number when there are not so many.
    std::size_t characterOfUnit(std::uint32_t unit) const {
        std::size_t index = 0;
        while (index < count() && starts[index + 1] <= unit)
            ++index;
        return index;
    }

    /// Whether `other` stands at the character `index`.
    bool holds(const UnitModel &other, std::size_t index) const {
        return index + other.count() <= count() &&
               std::equal(other.characters.begin(), other.characters.end(),
                          characters.begin() + static_cast<std::ptrdiff_t>(index));
    }

    std::vector<std::string> characters;
    std::vector<std::uint32_t> starts; // of each character in units, and where the text ends
    std::u16string units;

private:
    void addUnits(const std::string &character) {
        starts.push_back(static_cast<std::uint32_t>(units.size()));
        std::uint32_t value = static_cast<unsigned char>(character[0]);
        if (character.size() > 1)
            value &= 0x7Fu >> character.size();
        for (std::size_t i = 1; i < character.size(); ++i)
            value = value << 6 | (static_cast<unsigned char>(character[i]) & 0x3Fu);
        if (value >= 0x10000) {
            units += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
            value = 0xDC00 + ((value - 0x10000) & 0x3FF);
        }
        units += static_cast<char16_t>(value);
    }
};

#endif
