// Fills any restricted format with any values, in each of its forms.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>

#include "support/Require.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kLongestNumber = 4;

// Whether a width or precision asks for more memory than a fuzzer has.
bool hasLongNumber(const std::string &format) {
    std::size_t digits = 0;
    return std::any_of(format.begin(), format.end(), [&digits](unsigned char character) {
        digits = std::isdigit(character) ? digits + 1 : 0;
        return digits > kLongestNumber;
    });
}

qb::Value valueOf(std::uint8_t choice) {
    switch (choice % 10) {
    case 0:
        return -5;
    case 1:
        return 0xFFFFFFFFFFFFFFFFu;
    case 2:
        return INT64_MIN;
    case 3:
        return 1e300;
    case 4:
        return -0.125f;
    case 5:
        return 'x';
    case 6:
        return "text";
    case 7:
        return static_cast<const char *>(nullptr);
    case 8:
        return static_cast<id>("string object"_ns);
    default:
        return static_cast<id>(nullptr);
    }
}

id objectOf(std::uint8_t choice) {
    const id objects[] = {NSNumber::numberWithInt(-5), NSNumber::numberWithDouble(1e300), "text"_ns,
                          NSArray::arrayWithObject("x"_ns)};
    return objects[choice % 4];
}

} // namespace

// The first byte says how many of the next ones choose a value; the rest is the format.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::size_t count = size ? data[0] % 6U : 0;
    if (size < count + 1)
        return 0;
    const std::string format(reinterpret_cast<const char *>(data) + count + 1, size - count - 1);
    if (hasLongNumber(format))
        return 0;
    const NSAutoreleasePool pool;
    std::vector<qb::Value> values;
    std::vector<id> objects;
    for (std::size_t i = 1; i <= count; ++i) {
        values.push_back(valueOf(data[i]));
        objects.push_back(objectOf(data[i]));
    }
    const qb::ArgList list(values);
    NSString *const string = NSString::stringWith(format);
    NSString *const filled = NSString::stringWithRestrictedFormatAndArglist(string, list);
    require(filled != nullptr, "there is a result");
    NSMutableString *const appended = NSMutableString::stringWith("before ");
    appended->appendRestrictedFormatWithArgList(string, list);
    require(appended->view() == "before " + std::string(filled->view()), "appending gives the same text");
    require(NSString::stringWithRestrictedFormatAndObjects(string, NSArray::arrayWith(objects)) != nullptr,
            "the objects form has a result");
    if (format.find('%') == std::string::npos && format.find('\0') == std::string::npos)
        require(filled->view() == format, "text without conversions stays as it is");
    return 0;
}
