// Names of operations.
#ifndef QBFOUNDATION_RUNTIME_SELECTOR_H
#define QBFOUNDATION_RUNTIME_SELECTOR_H

#include <QBFoundation/Runtime/Types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The name of an operation, with its colons: `addString:times:`. One object for each text, kept for the
/// process.
class QB_EXPORT Selector {
public:
    Selector(const Selector &) = delete;
    Selector &operator=(const Selector &) = delete;

    /// The text with its colons, NUL-terminated.
    const char *text() const { return text_; }
    std::string_view view() const { return {text_, length_}; }

    /// How many arguments an operation of this name takes.
    unsigned colons() const { return colons_; }

    /// A hash of the text, equal in every process.
    std::uint32_t hash() const { return hash_; }

    /// Returns the one selector with `text`, made if there is none. A NUL byte ends the text.
    static SEL named(std::string_view text);
    /// Returns the one selector with `text`; null when no operation or program has asked for it yet.
    static SEL namedIfKnown(std::string_view text);

private:
    Selector() = default;

    const char *text_ = nullptr;
    std::uint32_t length_ = 0;
    std::uint32_t hash_ = 0;
    unsigned colons_ = 0;
};

namespace qb {

/// A text literal as a template argument.
template <std::size_t N>
struct FixedString {
    char text[N]{};

    constexpr FixedString(const char (&literal)[N]) { std::copy_n(literal, N, text); }
    constexpr std::size_t length() const { return N - 1; }
    constexpr std::string_view view() const { return {text, N - 1}; }
    constexpr std::size_t colons() const {
        return static_cast<std::size_t>(std::count(text, text + N - 1, ':'));
    }
};

/// A selector that is known when the program is compiled. It serves wherever a `SEL` is wanted.
template <FixedString Text>
struct SelectorLiteral {
    SEL selector() const {
        static const SEL interned = Selector::named(Text.view());
        return interned;
    }
    operator SEL() const { return selector(); }
    SEL operator->() const { return selector(); }
};

} // namespace qb

/// The selector of that text: `"addString:times:"_sel`.
template <qb::FixedString Text>
constexpr qb::SelectorLiteral<Text> operator""_sel() {
    return {};
}

#endif
