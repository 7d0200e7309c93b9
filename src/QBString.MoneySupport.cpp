// Amounts of money, in cents.
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

namespace {

// The decimal number with which the text begins, at most as far from 0 as fits.
long long leadingNumber(const std::string &text) {
    return std::strtoll(text.c_str(), nullptr, 10);
}

std::int32_t asInt(long long cents) {
    return static_cast<std::int32_t>(std::clamp<long long>(cents, INT_MIN, INT_MAX));
}

} // namespace

std::span<const qb::Method> qb::tables::stringMoneySupport() {
    static const qb::Method methods[] = {
        qb::method<"intFromMoneyString">(&NSString::intFromMoneyString),
        qb::method<"intNumberFromMoneyString">(&NSString::intNumberFromMoneyString),
    };
    return methods;
}

std::int32_t NSString::intFromMoneyString() const {
    std::string text(cString());
    std::replace(text.begin(), text.end(), ',', '.');
    const std::size_t point = text.find('.');
    if (point == std::string::npos)
        return asInt(std::clamp<long long>(leadingNumber(text), INT_MIN, INT_MAX) * 100);
    // The decimals move over the point, however few they are.
    return asInt(leadingNumber(text.substr(0, point) + text.substr(point + 1, 2)));
}

NSNumber *NSString::intNumberFromMoneyString() const {
    return NSNumber::numberWithInt(intFromMoneyString());
}
