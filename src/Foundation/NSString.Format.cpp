#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Conversion.h"
#include "Foundation/NSString.Tables.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace {

using qb::Conversion;
using qb::Kind;
using qb::Value;

constexpr std::string_view kModifiers = " #+-.0123456789";
constexpr std::string_view kLengthLetters = "hlLqjzt";

// Appends one value. Returns false when it does not serve the conversion.
bool appendValue(std::string &target, const Conversion &conversion, const Value &value) {
    switch (conversion.letter) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        if (!qb::servesInteger(value))
            return false;
        conversion.appendInteger(target, value);
        return true;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
        if (value.kind() != Kind::real)
            return false;
        conversion.appendReal(target, value.real());
        return true;
    case 'c':
        if (value.kind() != Kind::character && value.kind() != Kind::integer)
            return false;
        conversion.appendCharacter(target, static_cast<char>(value.integer()));
        return true;
    case 's': {
        std::string_view text;
        if (!qb::textOf(value, text))
            return false;
        conversion.appendText(target, text);
        return true;
    }
    case 'p':
        if (!value.pointer() && !value.isNull())
            return false;
        Conversion{"#", 'x'}.appendInteger(target, value);
        return true;
    case '@': {
        if (value.kind() != Kind::object && value.kind() != Kind::classObject && !value.isNull())
            return false;
        NSString *const text = value.object() ? value.object()->description() : nullptr;
        Conversion{conversion.modifiers, 's'}.appendText(target, text ? text->view() : "(null)");
        return true;
    }
    default:
        return false;
    }
}

// Fills the format; nothing when it is invalid.
std::optional<std::string> filled(std::string_view format, const qb::ArgList &values) {
    std::string target;
    std::uint32_t next = 0;
    for (std::size_t position = 0; position < format.size();) {
        const std::size_t percent = std::min(format.find('%', position), format.size());
        target += format.substr(position, percent - position);
        if (percent == format.size())
            break;
        const std::size_t modifiersEnd =
            std::min(format.find_first_not_of(kModifiers, percent + 1), format.size());
        const std::size_t letter =
            std::min(format.find_first_not_of(kLengthLetters, modifiersEnd), format.size());
        position = letter + 1;
        if (letter == format.size())
            break; // a format that ends inside a conversion: the rest is dropped
        const Conversion conversion{format.substr(percent + 1, modifiersEnd - percent - 1), format[letter]};
        if (conversion.letter == '%')
            target += '%';
        else if (conversion.modifiers.size() > Conversion::kMostModifiers || next == values.count() ||
                 !appendValue(target, conversion, values[next++]))
            return std::nullopt;
    }
    return target;
}

} // namespace

std::span<const qb::Method> qb::tables::stringFormat() {
    static const qb::Method methods[] = {
        qb::classMethod<"stringWithFormat:">(&NSString::stringWithFormatWithArgList),
    };
    return methods;
}

NSString *NSString::stringWithFormatWithArgList(NSString *format, const qb::ArgList &argList) {
    if (!format)
        return nullptr;
    const std::optional<std::string> text = filled(format->view(), argList);
    return stringWith(text ? std::string_view(*text) : format->view());
}
