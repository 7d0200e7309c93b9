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

/// Whether the elements of a bracket expression are letters and digits only, in any case.
bool isOfWords(std::string_view elements) {
    while (!elements.empty()) {
        const bool isRange = elements.size() > 2 && elements[1] == '-';
        if (!isWordRange(elements[0], elements[isRange ? 2 : 0]))
            return false;
        elements.remove_prefix(isRange ? 3 : 1);
    }
    return true;
}

} // namespace

bool isDelimited(std::string_view part, std::string_view behind) {
    behind.remove_prefix(std::min(behind.find_first_not_of(')'), behind.size()));
    constexpr std::string_view kDelimiters = " \t\n!\"#%&',-/:;<=>@_~";
    if (part.size() < 3 || part[0] != '[' || behind.empty() ||
        kDelimiters.find(behind[0]) == std::string_view::npos)
        return false;
    if (behind.size() > 1 && std::string_view("*?{").find(behind[1]) != std::string_view::npos)
        return false; // it need not follow
    const std::string_view elements = part.substr(1, part.size() - 2);
    if (elements[0] != '^')
        return isOfWords(elements);
    const bool isLast = elements.back() == behind[0]; // where a "-" stands for itself, whatever is in front
    const std::size_t place = isLast ? elements.size() - 1 : elements.find(behind[0]);
    if (place == std::string_view::npos || elements.find('[') != std::string_view::npos)
        return false;
    const bool isRange = behind[0] == '-' && place != 1 && place != elements.size() - 1;
    return !isRange && isAscii(elements[place - 1]); // else it may end a longer character
}

} // namespace qb::text
