// Time-zone files of the system.
#ifndef QBFOUNDATION_CALENDAR_ZONEFILE_H
#define QBFOUNDATION_CALENDAR_ZONEFILE_H

#include "PosixRule.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qb::calendar {

/// No zone's clocks are further from UTC than this, in seconds (RFC 8536, section 3.2).
constexpr std::int32_t kMaxZoneOffset = 26 * 3600;

/// The kinds of local time of a zone and when each begins.
struct ZoneData {
    struct Type {
        std::int32_t offset;
        bool isDst;
        std::uint32_t nameStart; // in `names`
        std::uint32_t nameLength;
    };

    std::vector<std::int64_t> transitions; // UTC seconds, ascending
    std::vector<std::uint8_t>
        typeIndexes;         // the type from each transition on, as many as there are transitions
    std::vector<Type> types; // at least one; the first holds before all transitions
    std::string names;
    std::optional<PosixRule> rule; // holds from the last transition on, or always when there is none
};

/// Reads the bytes of a TZif file (RFC 8536, versions 1 to 4) into `data`.
///
/// Returns false for malformed bytes, and for a file that counts leap seconds, which dates here never do;
/// `data` then holds nothing of use.
bool parseZoneFile(std::string_view bytes, ZoneData &data);

/// Reads the whole file `path` into `bytes`. Returns 0 or the system's error number, EFBIG when it is too
/// large.
int readZoneFile(const std::string &path, std::string &bytes);

} // namespace qb::calendar

#endif
