#include "Foundation/Conversion.h"

#include <QBFoundation/Foundation/NSString.h>

#include "Text/Numbers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace qb {

namespace {

// The conversion as printf wants it, with the length letters that fit the value.
std::string printfFormat(const Conversion &conversion, std::string_view lengthLetters) {
    std::string format = "%";
    format += conversion.modifiers;
    format += lengthLetters;
    format += conversion.letter;
    return format;
}

template <class T>
void appendPrinted(std::string &target, const std::string &format, T value) {
    std::array<char, 128> buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), format.c_str(), value);
    if (length < 0)
        return;
    if (static_cast<std::size_t>(length) < buffer.size()) {
        target.append(buffer.data(), static_cast<std::size_t>(length));
        return;
    }
    const std::size_t start = target.size();
    target.resize(start + static_cast<std::size_t>(length) + 1);
    std::snprintf(target.data() + start, static_cast<std::size_t>(length) + 1, format.c_str(), value);
    target.pop_back();
}

// The value as unsigned of its own width, 32 bits at least.
std::uint64_t unsignedBits(const Value &value) {
    const auto bits = static_cast<std::uint64_t>(value.integer());
    return value.width() == 64 ? bits : bits & UINT32_MAX;
}

} // namespace

void Conversion::appendInteger(std::string &target, const Value &value) const {
    const bool isDecimal = letter == 'd' || letter == 'i';
    const bool isSigned = isDecimal && value.isSigned();
    std::uint64_t bits = value.kind() == Kind::integer ? unsignedBits(value)
                                                       : reinterpret_cast<std::uintptr_t>(value.pointer());
    if (isSigned)
        bits = static_cast<std::uint64_t>(value.integer());
    if (modifiers.empty() && (isDecimal || letter == 'u')) {
        char digits[text::kLongestInteger];
        const std::size_t length = isSigned ? text::formatInteger(static_cast<std::int64_t>(bits), digits)
                                            : text::formatInteger(bits, digits);
        target.append(digits, length);
        return;
    }
    if (isSigned)
        return appendPrinted(target, printfFormat(*this, "ll"), static_cast<long long>(bits));
    Conversion asUnsigned = *this;
    if (isDecimal)
        asUnsigned.letter = 'u';
    appendPrinted(target, printfFormat(asUnsigned, "ll"), static_cast<unsigned long long>(bits));
}

void Conversion::appendReal(std::string &target, double value) const {
    appendPrinted(target, printfFormat(*this, ""), value);
}

void Conversion::appendCharacter(std::string &target, char value) const {
    appendText(target, {&value, 1});
}

// Not through printf, which would end the text at a NUL.
void Conversion::appendText(std::string &target, std::string_view text) const {
    const std::size_t point = modifiers.find('.');
    if (point != std::string_view::npos && letter == 's')
        text = text.substr(0, std::strtoul(std::string(modifiers.substr(point + 1)).c_str(), nullptr, 10));
    const std::string_view front = modifiers.substr(0, point);
    const std::size_t digit = front.find_first_of("123456789");
    const std::size_t width = digit == std::string_view::npos
                                  ? 0
                                  : std::strtoul(std::string(front.substr(digit)).c_str(), nullptr, 10);
    const std::size_t padding = width > text.size() ? width - text.size() : 0;
    const bool isLeft = front.find('-') != std::string_view::npos;
    target.append(isLeft ? 0 : padding, ' ');
    target += text;
    target.append(isLeft ? padding : 0, ' ');
}

bool servesInteger(const Value &value) {
    return value.kind() == Kind::integer || (value.kind() == Kind::pointer);
}

bool textOf(const Value &value, std::string_view &text) {
    if (const char *cString = value.cString()) {
        text = cString;
        return true;
    }
    auto *string = castOrNil<NSString>(value.object());
    if (!string)
        return false;
    text = string->view();
    return true;
}

} // namespace qb
