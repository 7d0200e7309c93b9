// Date patterns whose texts all have one length.
#ifndef QBFOUNDATION_CALENDAR_FIXEDFORMAT_H
#define QBFOUNDATION_CALENDAR_FIXEDFORMAT_H

#include "Civil.h"

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

    /// Whether `write` may be called for fields that are in their usual ranges: there are no other
    /// conversions, and the year has four digits.
    bool suits(const Fields &fields) const { return isFixed_ && fields.year >= 1000 && fields.year <= 9999; }

    std::size_t length() const { return text_.size(); }

    /// Writes `length` bytes, those of `appendFormatted`, without a NUL.
    void write(const Fields &fields, char *target) const;

private:
    /// Two digits of the text.
    struct Number {
        std::size_t place;
        std::int64_t Fields::*field;
    };
    using Places = std::vector<std::size_t>;

    bool add(char letter);
    void addNumber(std::int64_t Fields::*field);
    void addPlace(Places &places, std::size_t width);

    std::string pattern_;
    std::string text_;
    std::vector<Number> numbers_;
    Places years_, yearsOfCentury_, weekdays_, months_, paddedDays_;
    bool isFixed_ = true;
};

/// Returns the pattern in its prepared form, valid until the next call. Those of late are kept.
const FixedFormat &fixedFormat(std::string_view pattern);

} // namespace qb::calendar

#endif
