#include "Text/Hash.h"

#include "Text/Bytes.h"

namespace qb::text {

namespace {

// Odd numbers with an even mix of ones and zeros; the fractions of the square roots of 2, 3 and 5.
constexpr std::uint64_t kFirst = 0x6A09E667F3BCC909u;
constexpr std::uint64_t kSecond = 0xBB67AE8584CAA73Bu;
constexpr std::uint64_t kThird = 0x3C6EF372FE94F82Bu;

// Each step can be undone for a given word, so no state is lost: what collides, collides by chance. The
// product's upper bits know all of the word; the shift brings them down for the next step.
inline std::uint64_t mixed(std::uint64_t state, std::uint64_t word) {
    state = (state ^ word) * kFirst;
    return state ^ state >> 32;
}

inline std::uint32_t finished(std::uint64_t state) {
    state *= kSecond;
    state ^= state >> 29;
    state *= kThird;
    return static_cast<std::uint32_t>(state >> 32);
}

} // namespace

std::uint32_t hashBytes(const char *bytes, std::size_t length) {
    const std::uint64_t start = length * kThird;
    if (length <= 8)
        return finished(mixed(start, loadShort(bytes, length)));
    // Two chains, so that the multiplications of one run beside those of the other.
    std::uint64_t even = start;
    std::uint64_t odd = ~start;
    const char *last = bytes + length - 8;
    for (; last - bytes > 8; bytes += 16) {
        even = mixed(even, loadWord<std::uint64_t>(bytes));
        odd = mixed(odd, loadWord<std::uint64_t>(bytes + 8));
    }
    // Up to 16 bytes are left; the last eight overlap what was read before them.
    if (last > bytes)
        even = mixed(even, loadWord<std::uint64_t>(bytes));
    odd = mixed(odd, loadWord<std::uint64_t>(last));
    return finished(mixed(even, odd * kSecond));
}

} // namespace qb::text
