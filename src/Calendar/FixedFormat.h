// Date patterns whose texts all have one length.
#ifndef QBFOUNDATION_CALENDAR_FIXEDFORMAT_H
#define QBFOUNDATION_CALENDAR_FIXEDFORMAT_H

#include "Civil.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qb::calendar {

/// A pattern of `appendFormatted`, prepared for many dates: its text with room for the conversions, which are
/// %a %b %d %e %H %m %M %S %y %Y and %%.
class FixedFormat {
public:
    explicit FixedFormat(std::string_view pattern = {});

    const std::string &pattern() const { return pattern_; }

    /// Whether `write` may be called for that time: there are no other conversions, and the year has four
    /// digits.
    bool suits(std::int64_t localSeconds) const {
        return isFixed_ && localSeconds >= kFirstSecond && localSeconds < kEndSecond;
    }

    std::size_t length() const { return text_.size(); }

    /// Writes `length` bytes, those of `appendFormatted` for a local time as seconds after 1970-01-01
    /// 00:00:00 local time, without a NUL.
    void write(std::int64_t localSeconds, char *target) const;

private:
    static constexpr std::int64_t kFirstSecond = daysFromCivil(1000, 1, 1) * kSecondsPerDay;
    static constexpr std::int64_t kEndSecond = daysFromCivil(10000, 1, 1) * kSecondsPerDay;

    /// Two bytes of the text, from the parts of a date.
    struct Copy {
        std::uint16_t source, target;
    };

    bool add(char letter);
    void addPair(std::size_t source);
    void addName(std::size_t source);

    std::string pattern_;
    std::string text_;
    std::vector<std::array<Copy, 2>> copies_; // by twos, which takes fewer steps
    bool isPairFull_ = true;
    bool isFixed_ = true;
};

/// Returns the pattern in its prepared form, valid until the next call. Those of late are kept.
const FixedFormat &fixedFormat(std::string_view pattern);

} // namespace qb::calendar

#endif
