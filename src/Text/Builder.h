// Texts that are put together from pieces.
#ifndef QB_TEXT_BUILDER_H
#define QB_TEXT_BUILDER_H

#include "Bytes.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace qb::text {

/// A text that grows at its end. A short one needs no memory but the builder's own.
///
/// Whatever makes it grow throws std::bad_alloc, with the text unchanged.
class Builder {
public:
    Builder() = default;
    Builder(const Builder &) = delete;
    Builder &operator=(const Builder &) = delete;

    std::size_t size() const { return static_cast<std::size_t>(next_ - start_); }
    /// The text, up to the next change.
    std::string_view view() const { return {start_, size()}; }

    /// Returns the end of the text, where `length` bytes can be written, which count from `commit` on.
    char *room(std::size_t length) {
        if (length > static_cast<std::size_t>(end_ - next_)) [[unlikely]]
            grow(length);
        return next_;
    }
    /// Takes `length` bytes that were written behind the end.
    void commit(std::size_t length) { next_ += length; }

    void append(std::string_view text) {
        copyBytes(room(text.size()), text.data(), text.size());
        commit(text.size());
    }
    void append(std::size_t count, char character) {
        std::memset(room(count), character, count);
        commit(count);
    }

private:
    void grow(std::size_t length);

    std::unique_ptr<char[]> allocated_; // instead of `own_`
    char own_[512];
    char *start_ = own_;
    char *next_ = own_;
    char *end_ = own_ + sizeof own_;
};

} // namespace qb::text

#endif
