#include <QBFoundation/Foundation/NSRange.h>

#include <QBFoundation/Foundation/NSString.h>

#include <algorithm>
#include <charconv>

namespace {

// Takes the next number of the text, the largest there is when it is out of range; 0 without one.
std::uint32_t takeNumber(const char *&position, const char *end) {
    position = std::find_if(position, end, [](char byte) { return byte >= '0' && byte <= '9'; });
    std::uint32_t number = 0;
    const auto [next, error] = std::from_chars(position, end, number);
    position = next;
    return error == std::errc::result_out_of_range ? UINT32_MAX : number;
}

} // namespace

NSString *NSStringFromRange(NSRange range) {
    return NSString::stringWithFormat("{%u, %u}"_ns, range.location, range.length);
}

NSRange NSRangeFromString(NSString *text) {
    if (!text)
        return {};
    const char *position = text->cString();
    const char *const end = position + text->cStringLength();
    const std::uint32_t location = takeNumber(position, end);
    return {location, takeNumber(position, end)};
}
