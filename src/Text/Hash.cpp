#include "Text/Hash.h"

namespace qb::text {

std::uint32_t detail::hashLongBytes(const char *bytes, std::size_t length) {
    // Two chains, so that the multiplications of one run beside those of the other.
    std::uint64_t even = length * kThird;
    std::uint64_t odd = ~even;
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
