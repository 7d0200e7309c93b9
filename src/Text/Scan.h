// Scans for bytes of a set, for one byte, and for the ends of lines.
#ifndef QB_TEXT_SCAN_H
#define QB_TEXT_SCAN_H

#include "Text/Bytes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace qb::text {

/// A set of bytes for scans; best a `constexpr` one.
class ByteSet {
public:
    constexpr ByteSet() = default;

    /// The set of the bytes of `members`.
    constexpr explicit ByteSet(std::string_view members) {
        for (char member : members)
            add(static_cast<unsigned char>(member));
    }

    /// Returns the set with the bytes from `first` to `last`, both included.
    [[nodiscard]] constexpr ByteSet with(unsigned char first, unsigned char last) const {
        ByteSet set = *this;
        for (unsigned member = first; member <= last; ++member)
            set.add(static_cast<unsigned char>(member));
        return set;
    }

    constexpr void add(unsigned char byte) {
        rows_[byte / 128][byte % 16] |= static_cast<std::uint8_t>(1 << (byte / 16 % 8));
    }

    constexpr bool contains(unsigned char byte) const {
        return rows_[byte / 128][byte % 16] >> (byte / 16 % 8) & 1;
    }

    /// Sixteen bytes each for the lower and the upper half of all bytes, as byte shuffles want them: bit `h %
    /// 8` of byte `l` tells whether the byte with high half `h` and low half `l` is a member.
    constexpr const std::uint8_t *row(int upper) const { return rows_[upper]; }

private:
    std::uint8_t rows_[2][16] = {};
};

/// Returns the first byte from `position` on that is in `set`, or `end`.
const char *findIn(const char *position, const char *end, const ByteSet &set);

/// Returns the first byte from `position` on that is not in `set`, or `end`.
const char *findNotIn(const char *position, const char *end, const ByteSet &set);

/// Returns how many bytes are in `set`.
std::size_t countIn(const char *position, const char *end, const ByteSet &set);

/// Returns one bit for each of the `length` bytes, at most 64, that is in `set`; the first byte's is the
/// lowest.
std::uint64_t membersAmong(const char *position, std::size_t length, const ByteSet &set);

/// Goes through the runs of bytes in a set, for texts where they are many: a block of 64 bytes is scanned at
/// once.
class MemberRuns {
public:
    MemberRuns(const char *position, const char *end, const ByteSet &set)
        : block_(position), end_(end), set_(set) {}

    /// Moves to the next run of members, or to the part of it that lies in the next block. Returns false at
    /// the end.
    bool next() {
        while (mask_ == 0) {
            block_ += blockLength_;
            blockLength_ = std::min<std::size_t>(64, static_cast<std::size_t>(end_ - block_));
            if (blockLength_ == 0)
                return false;
            mask_ = membersAmong(block_, blockLength_, set_);
        }
        const int start = std::countr_zero(mask_);
        const int length = std::countr_one(mask_ >> start);
        const std::uint64_t lowest = mask_ & (~mask_ + 1);
        mask_ &= mask_ + lowest; // the sum carries through the run
        begin_ = block_ + start;
        runEnd_ = begin_ + length;
        return true;
    }

    const char *begin() const { return begin_; }
    const char *end() const { return runEnd_; }

private:
    const char *block_;
    const char *const end_;
    const ByteSet &set_;
    std::size_t blockLength_ = 0;
    std::uint64_t mask_ = 0; // of the block, from the next run on
    const char *begin_ = nullptr;
    const char *runEnd_ = nullptr;
};

/// Returns the first `byte` from `position` on, or `end`. For one byte the C library's scan is the fastest.
inline const char *findByte(const char *position, const char *end, char byte) {
    if (position == end)
        return end;
    const void *found = std::memchr(position, byte, static_cast<std::size_t>(end - position));
    return found ? static_cast<const char *>(found) : end;
}

/// As above, for a byte that is not NUL and is expected within a few words.
inline const char *findByteNearby(const char *position, const char *end, char byte) {
    constexpr std::uint64_t kEach = 0x0101010101010101U;
    for (; position < end; position += 8) {
        const std::uint64_t other = loadShort(position, static_cast<std::size_t>(end - position)) ^
                                    kEach * static_cast<unsigned char>(byte);
        // The lowest of these bits is that of the first byte that is the wanted one.
        if (const std::uint64_t equal = (other - kEach) & ~other & 0x80 * kEach)
            return position + std::countr_zero(equal) / 8;
        if (end - position <= 8)
            break;
    }
    return end;
}

/// What ends the text of a line: a line feed, a carriage return, a NUL.
inline constexpr ByteSet kLineStops = ByteSet(std::string_view("\0\r\n", 3));

/// Returns the first of those bytes from `position` on, or `end`. Most lines are short, which needs no call.
inline const char *findLineStop(const char *position, const char *end) {
#ifdef __SSE2__
    for (; end - position >= 16; position += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(position));
        const auto places = [bytes](char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); };
        const __m128i stops = _mm_or_si128(_mm_or_si128(places('\n'), places('\r')), places('\0'));
        if (const auto mask = static_cast<unsigned>(_mm_movemask_epi8(stops)))
            return position + std::countr_zero(mask);
    }
#endif
    return findIn(position, end, kLineStops);
}

/// Letters, digits and "_": what may stand in any name.
inline constexpr ByteSet kLegalName = ByteSet("_").with('a', 'z').with('A', 'Z').with('0', '9');

namespace plain {
const char *findIn(const char *position, const char *end, const ByteSet &set);
const char *findNotIn(const char *position, const char *end, const ByteSet &set);
std::size_t countIn(const char *position, const char *end, const ByteSet &set);
std::uint64_t membersAmong(const char *position, std::size_t length, const ByteSet &set);
} // namespace plain

} // namespace qb::text

#endif
