// Where an endless repeat in a regular expression ends.
#ifndef QBFOUNDATION_TEXT_PATTERNDELIMITER_H
#define QBFOUNDATION_TEXT_PATTERNDELIMITER_H

#include <string_view>

namespace qb::text {

/// Whether a repeat of `part`, the text of a bracket expression or "\w", can end at one place only, because a
/// character that it has not must follow in `behind`, the pattern after the repeat: "[a-z]" before ") ", "\w"
/// before "\s", "[^:]" before ":". False when in doubt; so it is for any other part.
bool isDelimited(std::string_view part, std::string_view behind);

} // namespace qb::text

#endif
