// Uuencoded lines on plain bytes.
#ifndef QB_TEXT_UUDECODE_H
#define QB_TEXT_UUDECODE_H

#include <cstddef>
#include <string_view>

namespace qb::text {

/// Where a line ended its data.
struct UudecodedLine {
    static constexpr std::size_t kWhole = static_cast<std::size_t>(-1);

    char *end;             // of the bytes
    std::size_t malformed; // the place of the first character outside the table, or `kWhole`
};

/// Decodes a line without its end: a count, and groups of four characters for three bytes each. Blanks that
/// are missing at the end are filled in; what stands behind the groups is ignored.
///
/// `target` takes `uudecodedLength` bytes.
UudecodedLine uudecodeLine(std::string_view line, char *target);

/// Returns how many bytes the line stands for at most, by its first character.
std::size_t uudecodedLength(std::string_view line);

} // namespace qb::text

#endif
