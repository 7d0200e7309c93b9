#include "Foundation/VariadicValues.h"

#include <algorithm>
#include <cstddef>

namespace qb {

namespace {

// The conversions of a format, one by one.
class Conversions {
public:
    explicit Conversions(std::string_view format) : rest_(format) {}

    /// Finds the next one; false at the end.
    bool next() {
        const std::size_t percent = rest_.find('%');
        if (percent == std::string_view::npos)
            return false;
        rest_.remove_prefix(percent + 1);
        const std::size_t length = std::min(rest_.find_first_not_of(" #+-.0123456789LZlq"), rest_.size());
        if (length == rest_.size())
            return false;
        modifiers_ = rest_.substr(0, length);
        letter = rest_[length];
        rest_.remove_prefix(length + 1);
        return true;
    }

    /// How often a letter stands among the modifiers.
    auto count(char modifier) const { return std::count(modifiers_.begin(), modifiers_.end(), modifier); }

    char letter = 0;

private:
    std::string_view rest_;
    std::string_view modifiers_;
};

template <class Int, class Long, class LongLong, class Size>
Value integer(const Conversions &conversion, std::va_list &arguments) {
    if (conversion.count('q') || conversion.count('L') || conversion.count('l') > 1)
        return va_arg(arguments, LongLong);
    if (conversion.count('l'))
        return va_arg(arguments, Long);
    if (conversion.count('Z'))
        return va_arg(arguments, Size);
    return va_arg(arguments, Int);
}

} // namespace

std::vector<Value> variadicValues(std::string_view format, std::va_list arguments) {
    std::va_list left; // as a parameter it is a pointer on some systems, which has no reference
    va_copy(left, arguments);
    std::vector<Value> values;
    Conversions conversion(format);
    bool isKnown = true;
    while (isKnown && conversion.next()) {
        switch (conversion.letter) {
        case '%':
            break;
        case 'd':
        case 'i':
            values.push_back(integer<int, long, long long, std::ptrdiff_t>(conversion, left));
            break;
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            values.push_back(
                integer<unsigned, unsigned long, unsigned long long, std::size_t>(conversion, left));
            break;
        case 'e':
        case 'E':
        case 'f':
        case 'g':
            values.push_back(conversion.count('L') ? static_cast<double>(va_arg(left, long double))
                                                   : va_arg(left, double));
            break;
        case 'c':
            values.push_back(static_cast<char>(va_arg(left, int)));
            break;
        case 's':
            values.push_back(static_cast<const char *>(va_arg(left, const char *)));
            break;
        default:
            isKnown = false;
        }
    }
    va_end(left);
    return values;
}

} // namespace qb
