// Decisions that a fuzz target takes by its input.
#ifndef QBFOUNDATION_FUZZ_SUPPORT_CHOICES_H
#define QBFOUNDATION_FUZZ_SUPPORT_CHOICES_H

#include <cstddef>
#include <cstdint>
#include <iterator>

/// The bytes that decide, 0 behind their end.
class Choices {
public:
    Choices(const std::uint8_t *bytes, std::size_t size) : bytes_(bytes), left_(size) {}
    std::size_t below(std::size_t end) { return (std::size_t{next()} << 8 | next()) % end; }
    template <class Container>
    auto of(const Container &all) {
        return all[below(std::size(all))];
    }
    bool areLeft() const { return left_ != 0; }

private:
    std::uint8_t next() { return left_ ? --left_, *bytes_++ : 0; }

    const std::uint8_t *bytes_;
    std::size_t left_;
};

#endif
