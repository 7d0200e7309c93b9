// Sixteen bytes of text, with what matters about them to property lists: a bit for each byte, the first one's
// lowest.
#ifndef QB_TEXT_PLISTBLOCK_H
#define QB_TEXT_PLISTBLOCK_H

#include "Text/Bytes.h"
#include "Text/Scan.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace qb::text {

/// Letters, digits and `_ $ . : / -`: what a property-list string may hold without quotes.
inline constexpr ByteSet kPlistBare = ByteSet("_$.:/-").with('a', 'z').with('A', 'Z').with('0', '9');

namespace plain {

/// The version for every processor, and the one that says what is right.
class PlistBlock {
public:
    static constexpr std::size_t kBytes = 16;

    /// Takes the `length` bytes (at most 16) at `position`, filled up with zero bytes; reads no other byte.
    PlistBlock(const char *position, std::size_t length) { std::memcpy(bytes_, position, length); }
    void store(char *target) const { std::memcpy(target, bytes_, sizeof bytes_); }

    unsigned bare() const { return members(kPlistBare); }
    unsigned slashes() const { return members(kSlash); }
    unsigned blanks() const { return members(kBlank); }
    /// What ends a piece between quotes.
    unsigned quotes() const { return members(kQuotes); }
    /// What needs an escape between quotes in any text.
    unsigned escaped() const { return members(kEscaped); }
    /// What is not ASCII.
    unsigned high() const { return members(kHigh); }
    /// The first and the other bytes of characters of two bytes.
    unsigned leadsOfTwo() const { return members(kLeadsOfTwo); }
    unsigned continuations() const { return members(kContinuations); }

private:
    static constexpr ByteSet kSlash = ByteSet("/");
    static constexpr ByteSet kBlank = ByteSet(" ").with('\t', '\r');
    static constexpr ByteSet kQuotes = ByteSet("\"\\");
    static constexpr ByteSet kEscaped = ByteSet("\"\\\x7F").with(0x00, 0x1F);
    static constexpr ByteSet kLeadsOfTwo = ByteSet().with(0xC2, 0xDF);
    static constexpr ByteSet kContinuations = ByteSet().with(0x80, 0xBF);
    static constexpr ByteSet kHigh = ByteSet().with(0x80, 0xFF);

    unsigned members(const ByteSet &set) const {
        unsigned mask = 0;
        for (std::size_t i = 0; i < kBytes; ++i)
            mask |= static_cast<unsigned>(set.contains(static_cast<unsigned char>(bytes_[i]))) << i;
        return mask;
    }

    char bytes_[kBytes] = {};
};

} // namespace plain

#ifdef __SSE2__

namespace sse2 {

class PlistBlock {
public:
    static constexpr std::size_t kBytes = 16;

    PlistBlock(const char *position, std::size_t length)
        : bytes_(length >= kBytes ? _mm_loadu_si128(reinterpret_cast<const __m128i *>(position))
                                  : loadPart(position, length)) {}
    void store(char *target) const { _mm_storeu_si128(reinterpret_cast<__m128i *>(target), bytes_); }

    unsigned bare() const {
        const __m128i small = _mm_or_si128(bytes_, _mm_set1_epi8(0x20)); // letters as small ones
        const __m128i words = _mm_or_si128(between(small, 'a', 'z'), between(bytes_, '-', ':'));
        return bits(_mm_or_si128(words, _mm_or_si128(equal('_'), equal('$'))));
    }
    unsigned slashes() const { return bits(equal('/')); }
    unsigned blanks() const { return bits(_mm_or_si128(equal(' '), between(bytes_, '\t', '\r'))); }
    unsigned quotes() const { return bits(quoteBytes()); }
    unsigned escaped() const {
        const __m128i controls = _mm_or_si128(between(bytes_, 0x00, 0x1F), equal(0x7F));
        return bits(_mm_or_si128(quoteBytes(), controls));
    }
    unsigned high() const { return bits(bytes_); }
    unsigned leadsOfTwo() const { return bits(between(bytes_, '\xC2', '\xDF')); }
    unsigned continuations() const { return bits(between(bytes_, '\x80', '\xBF')); }

private:
    // Two words: by way of memory, the vector would have to wait until both are stored.
    static __m128i loadPart(const char *position, std::size_t length) {
        if (length < 8)
            return _mm_set_epi64x(0, static_cast<long long>(loadShort(position, length)));
        const std::size_t rest = length - 8;
        const std::uint64_t last = loadWord<std::uint64_t>(position + rest);
        const std::uint64_t high = last >> 1 >> (63 - 8 * rest);
        return _mm_set_epi64x(static_cast<long long>(high), loadWord<long long>(position));
    }
    __m128i quoteBytes() const { return _mm_or_si128(equal('"'), equal('\\')); }
    static unsigned bits(__m128i bytes) { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }
    __m128i equal(char byte) const { return _mm_cmpeq_epi8(bytes_, _mm_set1_epi8(byte)); }
    static __m128i between(__m128i bytes, char first, char last) {
        const __m128i distance = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
        return _mm_cmpeq_epi8(_mm_min_epu8(distance, _mm_set1_epi8(static_cast<char>(last - first))),
                              distance);
    }

    __m128i bytes_;
};

} // namespace sse2

using sse2::PlistBlock;

#else

using plain::PlistBlock;

#endif

/// The part of a text that lies in front, as a block takes it.
inline std::size_t partLength(const char *position, const char *end) {
    return std::min(static_cast<std::size_t>(end - position), PlistBlock::kBytes);
}

constexpr unsigned firstBits(std::size_t count) {
    return (1U << count) - 1;
}

/// Returns the first byte from `position` on that is no blank, or `end`.
inline const char *findNoBlank(const char *position, const char *end) {
    // Most often there is none or one.
    for (int i = 0; i < 2; ++i, ++position)
        if (position == end || !isBlank(*position))
            return position;
    while (position != end) {
        const std::size_t length = partLength(position, end);
        const PlistBlock block(position, length);
        const auto blanks = static_cast<std::size_t>(std::countr_zero(~(block.blanks() & firstBits(length))));
        position += blanks;
        if (blanks < PlistBlock::kBytes)
            break;
    }
    return position;
}

/// Returns the first quote or backslash from `position` on, or `end`.
inline const char *findQuote(const char *position, const char *end) {
    while (position != end) {
        const std::size_t length = partLength(position, end);
        const PlistBlock block(position, length);
        if (const unsigned quotes = block.quotes() & firstBits(length))
            return position + std::countr_zero(quotes);
        position += length;
    }
    return end;
}

/// Returns the end of the bare string at `position`: of its last byte that may stand bare, or where a comment
/// begins.
inline const char *findBareEnd(const char *position, const char *end) {
    while (position != end) {
        const std::size_t length = partLength(position, end);
        const PlistBlock block(position, length);
        const auto bare = static_cast<std::size_t>(std::countr_zero(~(block.bare() & firstBits(length))));
        for (unsigned slashes = block.slashes() & firstBits(bare); slashes; slashes &= slashes - 1) {
            const char *const slash = position + std::countr_zero(slashes);
            if (slash + 1 != end && (slash[1] == '/' || slash[1] == '*'))
                return slash;
        }
        position += bare;
        if (bare < PlistBlock::kBytes)
            break;
    }
    return position;
}

} // namespace qb::text

#endif
