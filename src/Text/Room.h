// Texts that grow by what callers give.
#ifndef QBFOUNDATION_TEXT_ROOM_H
#define QBFOUNDATION_TEXT_ROOM_H

#include <cstdint>
#include <new>
#include <string>
#include <string_view>

namespace qb::text {

/// Throws std::bad_alloc where `target` can't take `more` bytes, as on 32 bits from 2 GiB on.
inline void requireRoom(const std::string &target, std::uint64_t more) {
    if (more > target.max_size() - target.size())
        throw std::bad_alloc();
}

/// Appends `text` to `target`; throws as `requireRoom`.
inline void append(std::string &target, std::string_view text) {
    requireRoom(target, text.size());
    target += text;
}

} // namespace qb::text

#endif
