#include "Foundation/Conversion.h"

#include <QBFoundation/Foundation/NSString.h>

#include "Text/Numbers.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <utility>

namespace qb {

namespace {

// The longest number in octal digits.
constexpr std::size_t kMostDigits = 22;

// The value as unsigned of its own width, 32 bits at least.
std::uint64_t unsignedBits(const Value &value) {
    if (value.kind() != Kind::integer)
        return reinterpret_cast<std::uintptr_t>(value.pointer());
    const auto bits = static_cast<std::uint64_t>(value.integer());
    return value.width() == 64 ? bits : bits & UINT32_MAX;
}

// Writes the digits so that they end at `end`; returns their beginning.
char *writeDigits(std::uint64_t value, char letter, char *end) {
    if (letter == 'o') {
        for (; value; value >>= 3)
            *--end = static_cast<char>('0' + (value & 7));
        return end;
    }
    const char *const digits = letter == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
    for (; value; value >>= 4)
        *--end = digits[value & 15];
    return end;
}

bool servesInteger(const Value &value) {
    return value.kind() == Kind::integer || value.kind() == Kind::pointer;
}

} // namespace

bool isIntegerLetter(char letter) {
    return letter == 'd' || letter == 'i' || letter == 'o' || letter == 'u' || letter == 'x' || letter == 'X';
}

bool isRealLetter(char letter) {
    const char lower = static_cast<char>(letter | 0x20);
    return lower == 'a' || (lower >= 'e' && lower <= 'g');
}

bool textOf(const Value &value, std::string_view &text, std::size_t most) {
    if (const char *cString = value.cString()) {
        text = {cString, ::strnlen(cString, most)};
        return true;
    }
    auto *string = castOrNil<NSString>(value.object());
    if (!string)
        return false;
    text = string->view();
    return true;
}

// --- Reading ---

bool Conversion::read(std::string_view format, std::size_t &position, Letters skipped) {
    letter_ = 0;
    while (position < format.size()) {
        const char character = format[position++];
        if (character >= '0' && character <= '9') {
            if (!addDigit(static_cast<std::uint32_t>(character - '0')))
                return false;
        } else if (!readModifier(character) && !skipped.contains(character)) {
            letter_ = character;
            return true;
        }
    }
    return true;
}

bool Conversion::readModifier(char character) {
    switch (character) {
    case '-':
        flags_ |= kLeft;
        return true;
    case '+':
        flags_ |= kPlus;
        return true;
    case ' ':
        flags_ |= kBlank;
        return true;
    case '#':
        flags_ |= kAlternate;
        return true;
    case '.':
        precision_ = 0;
        return true;
    default:
        return false;
    }
}

bool Conversion::addDigit(std::uint32_t digit) {
    std::uint32_t &number = precision_ == kNone ? width_ : precision_;
    if (digit == 0 && number == 0 && precision_ == kNone)
        flags_ |= kZero;
    number = number * 10 + digit;
    return number <= kLargestWidth;
}

bool Conversion::takeStar(const Value &value) {
    if (value.kind() != Kind::integer)
        return false;
    const std::int64_t number = value.integer();
    if (number > kLargestWidth || number < -std::int64_t{kLargestWidth})
        return false;
    if (precision_ != kNone) {
        precision_ = number < 0 ? kNone : static_cast<std::uint32_t>(number);
        return true;
    }
    if (number < 0)
        flags_ |= kLeft;
    width_ = static_cast<std::uint32_t>(number < 0 ? -number : number);
    return true;
}

// --- Rendering ---

bool Conversion::appendValue(text::Builder &target, const Value &value) const {
    if (isIntegerLetter(letter_)) {
        if (!servesInteger(value))
            return false;
        appendInteger(target, value);
    } else if (isRealLetter(letter_)) {
        if (value.kind() != Kind::real)
            return false;
        appendReal(target, value.real());
    } else if (letter_ == 'c') {
        if (value.kind() != Kind::character && value.kind() != Kind::integer)
            return false;
        appendCharacter(target, static_cast<char>(value.integer()));
    } else {
        std::string_view text;
        if (letter_ != 's' || !textOf(value, text, precision_))
            return false;
        appendText(target, text);
    }
    return true;
}

void Conversion::appendInteger(text::Builder &target, const Value &value) const {
    const bool isDecimal = letter_ == 'd' || letter_ == 'i';
    const bool isNegative = isDecimal && value.isSigned() && value.integer() < 0;
    const std::uint64_t number =
        isNegative ? 0 - static_cast<std::uint64_t>(value.integer()) : unsignedBits(value);
    if ((isDecimal || letter_ == 'u') && isPlain()) { // nearly all
        char *const place = target.room(text::kLongestInteger);
        place[0] = '-';
        return target.commit(isNegative + text::formatInteger(number, place + isNegative));
    }
    std::array<char, kMostDigits> buffer;
    char *digits = buffer.data();
    char *end = digits;
    if (isDecimal || letter_ == 'u')
        end += number != 0 ? text::formatInteger(number, digits) : 0;
    else
        digits = writeDigits(number, letter_, end = digits + buffer.size());
    std::string_view sign;
    if (isDecimal)
        sign = isNegative ? "-" : flags_ & kPlus ? "+" : flags_ & kBlank ? " " : "";
    else if (flags_ & kAlternate && number != 0 && letter_ != 'u' && letter_ != 'o')
        sign = letter_ == 'x' ? "0x" : "0X";
    appendDigits(target, sign, {digits, static_cast<std::size_t>(end - digits)});
}

// `digits` of zero are none.
void Conversion::appendDigits(text::Builder &target, std::string_view sign, std::string_view digits) const {
    std::size_t least = precision_ == kNone ? 1 : precision_;
    if (flags_ & kAlternate && letter_ == 'o')
        least = std::max(least, digits.size() + 1);
    std::size_t zeros = least > digits.size() ? least - digits.size() : 0;
    const std::size_t length = sign.size() + zeros + digits.size();
    std::size_t padding = width_ > length ? width_ - length : 0;
    if (flags_ & kZero && !(flags_ & kLeft) && precision_ == kNone)
        zeros += std::exchange(padding, 0);
    if (!(flags_ & kLeft))
        target.append(padding, ' ');
    target.append(sign);
    target.append(zeros, '0');
    target.append(digits);
    if (flags_ & kLeft)
        target.append(padding, ' ');
}

void Conversion::appendAddress(text::Builder &target, const void *address) const {
    if (!address)
        return appendPadded(target, "(nil)");
    Conversion asInteger = *this;
    asInteger.letter_ = 'x';
    asInteger.flags_ |= kAlternate;
    asInteger.appendInteger(target, reinterpret_cast<std::uintptr_t>(address));
}

void Conversion::appendReal(text::Builder &target, double value) const {
    std::string format = "%";
    for (const auto &[flag, character] :
         {std::pair(kLeft, '-'), std::pair(kPlus, '+'), std::pair(kBlank, ' '), std::pair(kAlternate, '#'),
          std::pair(kZero, '0')})
        if (flags_ & flag)
            format += character;
    format += "*.*";
    format += letter_;
    const int width = static_cast<int>(width_);
    const int precision = precision_ == kNone ? -1 : static_cast<int>(precision_); // -1: none given
    const auto print = [&](std::size_t room) {
        const int length = std::snprintf(target.room(room), room, format.c_str(), width, precision, value);
        return length < 0 ? throw std::bad_alloc() : static_cast<std::size_t>(length);
    };
    constexpr std::size_t kUsualRoom = 128;
    const std::size_t length = print(kUsualRoom);
    if (length >= kUsualRoom)
        print(length + 1);
    target.commit(length);
}

// Not through printf, which would end the text at a NUL.
void Conversion::appendPadded(text::Builder &target, std::string_view text) const {
    if (width_ <= text.size())
        return target.append(text);
    const std::size_t padding = width_ - text.size();
    if (!(flags_ & kLeft))
        target.append(padding, ' ');
    target.append(text);
    if (flags_ & kLeft)
        target.append(padding, ' ');
}

} // namespace qb
