#include "Stamp.h"

#include <cstdint>
#include <cstring>

namespace qb::calendar {

namespace {

constexpr std::uint64_t kEachByte = 0x0101010101010101U;

/// Eight digits at once. Bytes are counted from the first of the text, which is the lowest.
class EightBytes {
public:
    explicit EightBytes(const char *bytes) {
        std::memcpy(&value_, bytes, sizeof value_);
        if constexpr (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__)
            value_ = __builtin_bswap64(value_);
    }

    bool areDigits() const {
        // Adding 6 takes what is above 9 out of the digits' sixteenth. No byte below 0xFA carries into the
        // next one, and a greater one is none of them by itself.
        const std::uint64_t raised = value_ + 6 * kEachByte;
        constexpr std::uint64_t kUpper = 0xF0 * kEachByte;
        return ((value_ & kUpper) | (raised & kUpper) >> 4) == ('0' | '0' >> 4) * kEachByte;
    }

    /// Makes the numbers of each two digits.
    void join() {
        value_ -= '0' * kEachByte;
        value_ = value_ * 10 + (value_ >> 8);
    }

    std::int64_t number(unsigned pair) const { return static_cast<std::uint8_t>(value_ >> (16 * pair)); }

private:
    std::uint64_t value_;
};

} // namespace

std::int64_t secondsOfStamp(const char *digits) {
    EightBytes date(digits), time(digits + kStampLength - 8); // the day is in both
    if (!date.areDigits() || !time.areDigits())
        return kNoSeconds;
    date.join();
    time.join();
    const Fields fields = {date.number(0) * 100 + date.number(1),
                           date.number(2),
                           date.number(3),
                           time.number(1),
                           time.number(2),
                           time.number(3)};
    if (fields.year == 0 || !isUsual(fields))
        return kNoSeconds;
    return secondsFromUsualFields(fields);
}

} // namespace qb::calendar
