// Sixteen bytes of text, with what matters about them to property lists: a bit for each byte, the first one's
// lowest.
#ifndef QB_TEXT_PLISTBLOCK_H
#define QB_TEXT_PLISTBLOCK_H

#include "Text/Bytes.h"
#include "Text/Scan.h"

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
    /// What needs an escape between quotes in any text.
    unsigned escaped() const { return members(kEscaped); }
    /// What is not ASCII.
    unsigned high() const { return members(kHigh); }

private:
    static constexpr ByteSet kSlash = ByteSet("/");
    static constexpr ByteSet kBlank = ByteSet(" ").with('\t', '\r');
    static constexpr ByteSet kEscaped = ByteSet("\"\\\x7F").with(0x00, 0x1F);
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
    unsigned escaped() const {
        const __m128i quotes = _mm_or_si128(equal('"'), equal('\\'));
        const __m128i controls = _mm_or_si128(between(bytes_, 0x00, 0x1F), equal(0x7F));
        return bits(_mm_or_si128(quotes, controls));
    }
    unsigned high() const { return bits(bytes_); }

private:
    static __m128i loadPart(const char *position, std::size_t length) {
        const std::size_t low = length < 8 ? length : 8;
        const std::uint64_t words[2] = {loadShort(position, low), loadShort(position + low, length - low)};
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(words));
    }
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

} // namespace qb::text

#endif
