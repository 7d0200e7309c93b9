// Random input for the tests that compare a fast path with a plain one.
#ifndef QB_TESTS_TEXT_RANDOMTEXT_H
#define QB_TESTS_TEXT_RANDOMTEXT_H

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>

/// Random numbers whose seed stands in the message of whatever fails in their scope.
class Random {
public:
    Random()
        : seed_(std::random_device{}()), engine_(seed_),
          trace_(__FILE__, __LINE__, "seed " + std::to_string(seed_)) {}

    std::uint64_t bits() { return engine_(); }
    /// A length below 2 to the power of `bits`, mostly a small one.
    std::uint32_t length(unsigned bits) {
        return static_cast<std::uint32_t>(engine_() % (1u << engine_() % bits));
    }
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }

    template <class T, std::size_t count>
    const T &oneOf(const T (&choices)[count]) {
        return choices[below(count)];
    }

private:
    std::uint64_t seed_;
    std::mt19937_64 engine_;
    testing::ScopedTrace trace_;
};

inline std::string randomBytes(Random &random, std::size_t length) {
    std::string bytes(length, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random.bits());
    return bytes;
}

/// A copy of a text that ends where its allocation ends, so that a checker of addresses sees each byte read
/// beyond; its beginning has any alignment.
class ExactCopy {
public:
    ExactCopy(const std::string &text, std::size_t alignment)
        : bytes_(new char[alignment + text.size()]), offset_(alignment), length_(text.size()) {
        if (length_)
            std::memcpy(bytes_.get() + offset_, text.data(), length_);
    }

    char *begin() { return bytes_.get() + offset_; }
    char *end() { return begin() + length_; }
    std::size_t size() const { return length_; }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t offset_;
    std::size_t length_;
};

/// The length of the well-formed character at that place, 0 when there is none: the table of RFC 3629,
/// section 4, row by row.
inline std::size_t wellFormedLength(std::string_view text, std::size_t position) {
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
    return isIn(position, 0, 0x7F) ? 1 : 0;
}

inline std::string times(std::size_t count, std::string_view text) {
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

/// Returns `length` bytes made of pieces of `pieces`, the last one cut.
template <std::size_t count>
std::string randomText(Random &random, std::size_t length, const std::string (&pieces)[count]) {
    std::string text;
    while (text.size() < length)
        text += random.oneOf(pieces);
    text.resize(length);
    return text;
}

#endif
