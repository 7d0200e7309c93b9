// Random input for the tests that compare a fast path with a plain one.
#ifndef QB_TESTS_TEXT_RANDOMTEXT_H
#define QB_TESTS_TEXT_RANDOMTEXT_H

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

/// Random numbers whose seed stands in the message of whatever fails in their scope.
class Random {
public:
    Random()
        : seed_(std::random_device{}()), engine_(seed_),
          trace_(__FILE__, __LINE__, "seed " + std::to_string(seed_)) {}

    std::uint64_t bits() { return engine_(); }
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
