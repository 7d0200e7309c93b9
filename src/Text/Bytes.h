// Unaligned words and short copies, shared by the byte kernels. Both word sizes are little-endian.
#ifndef QB_TEXT_BYTES_H
#define QB_TEXT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qb::text {

/// Returns the word at `position`, which needs no alignment.
template <class Word>
inline Word loadWord(const void *position) {
    Word word;
    std::memcpy(&word, position, sizeof word);
    return word;
}

/// Stores `word` at `position`, which needs no alignment.
template <class Word>
inline void storeWord(void *position, Word word) {
    std::memcpy(position, &word, sizeof word);
}

/// Returns the `length` bytes (at most 8) at `position` as a little-endian word filled up with zero bytes.
inline std::uint64_t loadShort(const char *position, std::size_t length) {
    if (length >= 8)
        return loadWord<std::uint64_t>(position);
    if (length >= 4) { // two words that overlap in the middle
        const std::uint64_t low = loadWord<std::uint32_t>(position);
        const std::uint64_t high = loadWord<std::uint32_t>(position + length - 4);
        return low | high << (8 * (length - 4));
    }
    if (length == 0)
        return 0;
    // Up to three bytes: the first, the middle and the last one, which may be the same.
    const auto byteAt = [position](std::size_t i) {
        return std::uint64_t{static_cast<unsigned char>(position[i])} << (8 * i);
    };
    return byteAt(0) | byteAt(length / 2) | byteAt(length - 1);
}

/// Runs up to this length are compared without a call.
constexpr std::size_t kShortRun = 64;

/// Returns whether both runs of `length` bytes (at most `kShortRun`) are equal.
inline bool areShortRunsEqual(const char *left, const char *right, std::size_t length) {
    const auto haveSame = [=](auto word, std::size_t i) {
        return loadWord<decltype(word)>(left + i) == loadWord<decltype(word)>(right + i);
    };
    if (length >= 8) {
        for (std::size_t i = 0; i < length - 8; i += 8)
            if (!haveSame(std::uint64_t{}, i))
                return false;
        return haveSame(std::uint64_t{}, length - 8);
    }
    if (length >= 4) // two words that overlap
        return haveSame(std::uint32_t{}, 0) && haveSame(std::uint32_t{}, length - 4);
    return length == 0 || (left[0] == right[0] && left[length / 2] == right[length / 2] &&
                           left[length - 1] == right[length - 1]);
}

/// Returns whether both runs of `length` bytes are equal.
inline bool areEqual(const char *left, const char *right, std::size_t length) {
    return length <= kShortRun ? areShortRunsEqual(left, right, length)
                               : std::memcmp(left, right, length) == 0;
}

/// Copies `length` bytes (at most 64) without a call; the areas do not overlap.
inline void copyShort(char *target, const char *source, std::size_t length) {
    if (length >= 16) {
        std::size_t done = 0;
        for (; done + 16 < length; done += 16)
            std::memcpy(target + done, source + done, 16);
        std::memcpy(target + length - 16, source + length - 16, 16);
        return;
    }
    if (length >= 8) {
        storeWord(target, loadWord<std::uint64_t>(source));
        storeWord(target + length - 8, loadWord<std::uint64_t>(source + length - 8));
        return;
    }
    if (length >= 4) {
        storeWord(target, loadWord<std::uint32_t>(source));
        storeWord(target + length - 4, loadWord<std::uint32_t>(source + length - 4));
        return;
    }
    for (std::size_t i = 0; i < length; ++i)
        target[i] = source[i];
}

/// Copies `length` bytes, without a call when they are few; the areas do not overlap.
inline void copyBytes(char *target, const char *source, std::size_t length) {
    if (length <= kShortRun)
        copyShort(target, source, length);
    else
        std::memcpy(target, source, length);
}

/// True for the blanks of the "C" locale: space, tab, line feed, vertical tab, form feed, carriage return.
inline bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

} // namespace qb::text

#endif
