#include "PatternDelimiter.h"

#include <algorithm>

namespace qb::text {

namespace {

bool isIn(char byte, char first, char last) {
    return first <= byte && byte <= last;
}

bool isAscii(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

/// Whether "first-last" has no other characters than letters, or digits.
bool isWordRange(char first, char last) {
    for (const std::string_view ends : {"az", "AZ", "09"})
        if (isIn(first, ends[0], ends[1]) && isIn(last, ends[0], ends[1]))
            return true;
    return false;
}

/// Returns how long the name of a class of letters or digits is that the elements begin with, "[:alpha:]"; or
/// 0.
std::size_t wordClassLength(std::string_view elements) {
    for (const std::string_view name :
         {"[:alpha:]", "[:alnum:]", "[:digit:]", "[:lower:]", "[:upper:]", "[:xdigit:]"})
        if (elements.starts_with(name))
            return name.size();
    return 0;
}

/// Whether the elements of a bracket expression are letters and digits only, in any case.
bool isOfWords(std::string_view elements) {
    while (!elements.empty()) {
        if (const std::size_t length = wordClassLength(elements)) {
            elements.remove_prefix(length);
            continue;
        }
        const bool isRange = elements.size() > 2 && elements[1] == '-';
        if (!isWordRange(elements[0], elements[isRange ? 2 : 0]))
            return false;
        elements.remove_prefix(isRange ? 3 : 1);
    }
    return true;
}

/// Returns what no word has and the pattern goes on with: a character that means itself, or "\s". Empty when
/// it goes on with anything else, or that need not follow.
std::string_view delimiterAt(std::string_view pattern) {
    constexpr std::string_view kDelimiters = " \t\n!\"#%&',-/:;<=>@_~";
    const std::size_t length = pattern.starts_with("\\s") ? 2 : 1;
    const bool isThere =
        length == 2 || (!pattern.empty() && kDelimiters.find(pattern[0]) != std::string_view::npos);
    const bool isNeeded =
        pattern.size() <= length || std::string_view("*?{").find(pattern[length]) == std::string_view::npos;
    return isThere && isNeeded ? pattern.substr(0, length) : std::string_view();
}

} // namespace

bool isDelimited(std::string_view part, std::string_view behind) {
    behind.remove_prefix(std::min(behind.find_first_not_of(')'), behind.size()));
    const std::string_view delimiter = delimiterAt(behind);
    if (part == "\\w")
        return !delimiter.empty() && delimiter != "_";
    if (part.size() < 3 || part[0] != '[' || delimiter.empty())
        return false;
    const std::string_view elements = part.substr(1, part.size() - 2);
    if (elements[0] != '^')
        return isOfWords(elements);
    if (delimiter.size() > 1)
        return false;
    const bool isLast = elements.back() == behind[0]; // where a "-" stands for itself, whatever is in front
    const std::size_t place = isLast ? elements.size() - 1 : elements.find(behind[0]);
    if (place == std::string_view::npos || elements.find('[') != std::string_view::npos)
        return false;
    const bool isRange = behind[0] == '-' && place != 1 && place != elements.size() - 1;
    return !isRange && isAscii(elements[place - 1]); // else it may end a longer character
}

} // namespace qb::text
