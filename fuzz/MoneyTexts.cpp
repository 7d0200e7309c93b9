// Reads any text as an amount of money, against a reader that takes digit by digit.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>

#include "support/Require.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

bool isIn(const std::string &text, std::size_t place, int (*kind)(int)) {
    return place < text.size() && kind(static_cast<unsigned char>(text[place])) != 0;
}

// The text's first digits, with what may stand in front of them.
std::int64_t leadingNumber(const std::string &text) {
    std::size_t place = 0;
    while (isIn(text, place, std::isspace))
        ++place;
    const bool isNegative = text[place] == '-';
    if (isNegative || text[place] == '+')
        ++place;
    std::int64_t number = 0;
    for (; isIn(text, place, std::isdigit); ++place)
        number = std::min<std::int64_t>(number * 10 + text[place] - '0', INT32_MAX + std::int64_t{1});
    return isNegative ? -number : number;
}

std::int64_t plainCents(std::string text) {
    const std::size_t point = text.find_first_of(".,");
    if (point == std::string::npos)
        return leadingNumber(text) * 100;
    text.erase(std::min(point + 3, text.size()));
    return leadingNumber(text.erase(point, 1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    NSString *const string = NSString::stringWith({reinterpret_cast<const char *>(data), size});
    const std::int64_t expected =
        std::clamp<std::int64_t>(plainCents(string->cString()), INT32_MIN, INT32_MAX);
    require(string->intFromMoneyString() == expected, "the cents");
    require(string->intNumberFromMoneyString()->intValue() == expected, "the number of them");
    return 0;
}
