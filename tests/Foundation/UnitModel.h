// Texts as lists of characters, the plain way: what the strings' positions are compared with.
#ifndef QB_TESTS_FOUNDATION_UNITMODEL_H
#define QB_TESTS_FOUNDATION_UNITMODEL_H

#include "Text/RandomText.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// A text decoded leniently: the bytes of each character, and the UTF-16 units of all.
class UnitModel {
public:
    explicit UnitModel(const std::string &text) {
        for (std::size_t position = 0; position < text.size();) {
            const std::string character = text.substr(position, lengthAt(text, position));
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
    // RFC 3629, section 4, row by row.
    static std::size_t lengthAt(const std::string &text, std::size_t position) {
        struct Row {
            unsigned char first, last, secondFirst, secondLast;
            std::size_t length;
        };
        static constexpr Row kRows[] = {{0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                                        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
                                        {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
                                        {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
        const auto isIn = [&](std::size_t at, unsigned char first, unsigned char last) {
            return at < text.size() && static_cast<unsigned char>(text[at]) >= first &&
                   static_cast<unsigned char>(text[at]) <= last;
        };
        for (const Row &row : kRows) {
            bool matches =
                isIn(position, row.first, row.last) && isIn(position + 1, row.secondFirst, row.secondLast);
            for (std::size_t i = 2; i < row.length; ++i)
                matches = matches && isIn(position + i, 0x80, 0xBF);
            if (matches)
                return row.length;
        }
        return 1;
    }

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
