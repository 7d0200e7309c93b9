#include "Text/Scan.h"

#include "Text/Avx2.h"
#include "Text/Bytes.h"
#include "Text/Cpu.h"

namespace qb::text {

namespace plain {

namespace {

template <bool isMember>
const char *find(const char *position, const char *end, const ByteSet &set) {
    while (position != end && set.contains(static_cast<unsigned char>(*position)) != isMember)
        ++position;
    return position;
}

} // namespace

const char *findIn(const char *position, const char *end, const ByteSet &set) {
    return find<true>(position, end, set);
}

const char *findNotIn(const char *position, const char *end, const ByteSet &set) {
    return find<false>(position, end, set);
}

std::size_t countIn(const char *position, const char *end, const ByteSet &set) {
    std::size_t count = 0;
    for (; position != end; ++position)
        count += set.contains(static_cast<unsigned char>(*position));
    return count;
}

std::uint64_t membersAmong(const char *position, std::size_t length, const ByteSet &set) {
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < length; ++i)
        mask |= std::uint64_t{set.contains(static_cast<unsigned char>(position[i]))} << i;
    return mask;
}

} // namespace plain

namespace avx2 {

namespace {

// A set as the shuffles want it.
struct Tables {
    __m256i lower;
    __m256i upper;
    __m256i bits; // the high half of a byte, modulo 8, to its bit
};

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline Tables tablesOf(const ByteSet &set) {
    const __m256i bits = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201u));
    return {loadTable(set.row(0)), loadTable(set.row(1)), bits};
}

// Returns one bit a byte: those in the set.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline std::uint32_t members(__m256i vector,
                                                                                const Tables &tables) {
    // A shuffle answers 0 where the top bit is set, so one of the two is always 0.
    const __m256i flipped = _mm256_xor_si256(vector, _mm256_set1_epi8(-128));
    const __m256i rows = _mm256_or_si256(_mm256_shuffle_epi8(tables.lower, vector),
                                         _mm256_shuffle_epi8(tables.upper, flipped));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi16(vector, 4), _mm256_set1_epi8(0x0F));
    const __m256i bits = _mm256_shuffle_epi8(tables.bits, high);
    return topBits(_mm256_cmpeq_epi8(_mm256_and_si256(rows, bits), bits));
}

template <bool isMember>
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline const char *
find(const char *position, const char *end, const ByteSet &set) {
    const Tables tables = tablesOf(set);
    constexpr std::uint32_t kFlip = isMember ? 0 : ~0u;
    for (; end - position >= 32; position += 32)
        if (const std::uint32_t hits = members(load(position), tables) ^ kFlip)
            return position + __builtin_ctz(hits);
    const auto rest = static_cast<std::size_t>(end - position);
    const std::uint32_t hits = members(loadPart(position, rest), tables) ^ kFlip;
    const std::uint32_t inside = hits & ((1u << rest) - 1);
    return inside ? position + __builtin_ctz(inside) : end;
}

} // namespace

[[gnu::target("avx2,popcnt")]] static const char *findIn(const char *position, const char *end,
                                                         const ByteSet &set) {
    return find<true>(position, end, set);
}

[[gnu::target("avx2,popcnt")]] static const char *findNotIn(const char *position, const char *end,
                                                            const ByteSet &set) {
    return find<false>(position, end, set);
}

[[gnu::target("avx2,popcnt")]] static std::uint64_t membersAmong(const char *position, std::size_t length,
                                                                 const ByteSet &set) {
    const Tables tables = tablesOf(set);
    const auto part = [&](std::size_t start) __attribute__((target("avx2,popcnt"), always_inline)) {
        const std::size_t rest = length - start;
        const std::uint32_t mask = members(loadPart(position + start, rest), tables);
        return mask & ((1u << rest) - 1);
    };
    if (length < 32)
        return part(0);
    const std::uint64_t low = members(load(position), tables);
    const std::uint64_t high = length == 64 ? members(load(position + 32), tables) : part(32);
    return low | high << 32;
}

[[gnu::target("avx2,popcnt")]] static std::size_t countIn(const char *position, const char *end,
                                                          const ByteSet &set) {
    const Tables tables = tablesOf(set);
    std::size_t count = 0;
    for (; end - position >= 32; position += 32)
        count += static_cast<unsigned>(__builtin_popcount(members(load(position), tables)));
    const auto rest = static_cast<std::size_t>(end - position);
    const std::uint32_t inside = members(loadPart(position, rest), tables) & ((1u << rest) - 1);
    return count + static_cast<unsigned>(__builtin_popcount(inside));
}

} // namespace avx2

const char *findIn(const char *position, const char *end, const ByteSet &set) {
    return hasAvx2() ? avx2::findIn(position, end, set) : plain::findIn(position, end, set);
}

const char *findNotIn(const char *position, const char *end, const ByteSet &set) {
    return hasAvx2() ? avx2::findNotIn(position, end, set) : plain::findNotIn(position, end, set);
}

std::size_t countIn(const char *position, const char *end, const ByteSet &set) {
    return hasAvx2() ? avx2::countIn(position, end, set) : plain::countIn(position, end, set);
}

std::uint64_t membersAmong(const char *position, std::size_t length, const ByteSet &set) {
    return hasAvx2() ? avx2::membersAmong(position, length, set) : plain::membersAmong(position, length, set);
}

} // namespace qb::text
