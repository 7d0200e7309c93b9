// From names to zones.
#include "Zone.h"

#include "System/Clock.h"
#include "System/Files.h"
#include "System/Process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <utility>

namespace qb::calendar {

namespace {

constexpr const char *kLocalTime = "/etc/localtime";
constexpr std::string_view kAheadSuffix = " DST";
// Names that aliases lead to, and what they are called today: systems may leave them out.
constexpr std::pair<std::string_view, std::string_view> kFormerNames[] = {
    {"GB-Eire", "Europe/London"}, {"W-SU", "Europe/Moscow"}, {"Australia/West", "Australia/Perth"}};
// More than the database has names; only made-up names reach it.
constexpr std::size_t kCacheLimit = 1024;

struct Abbreviation {
    std::string_view text;
    int minutes; // east of Greenwich
    bool isDst;
};

// Each stands for the one offset that it names, not for a place whose clocks change: "CET" is an hour ahead
// of Greenwich in July too. (The zone database has places under some of these names; `zoneNamed` gives
// those.) Where one text has several meanings the most populous place has it: "IST" is India's, "CST" North
// America's, "BST" Britain's. Sorted by text.
constexpr std::array kAbbreviations = {
    Abbreviation{"ACDT", 630, true},   Abbreviation{"ACST", 570, false}, Abbreviation{"ADT", -180, true},
    Abbreviation{"AEDT", 660, true},   Abbreviation{"AEST", 600, false}, Abbreviation{"AKDT", -480, true},
    Abbreviation{"AKST", -540, false}, Abbreviation{"AST", -240, false}, Abbreviation{"AWST", 480, false},
    Abbreviation{"BST", 60, true},     Abbreviation{"CAT", 120, false},  Abbreviation{"CDT", -300, true},
    Abbreviation{"CEST", 120, true},   Abbreviation{"CET", 60, false},   Abbreviation{"CST", -360, false},
    Abbreviation{"ChST", 600, false},  Abbreviation{"EAT", 180, false},  Abbreviation{"EDT", -240, true},
    Abbreviation{"EEST", 180, true},   Abbreviation{"EET", 120, false},  Abbreviation{"EST", -300, false},
    Abbreviation{"GMT", 0, false},     Abbreviation{"HDT", -540, true},  Abbreviation{"HKT", 480, false},
    Abbreviation{"HST", -600, false},  Abbreviation{"IDT", 180, true},   Abbreviation{"IST", 330, false},
    Abbreviation{"JST", 540, false},   Abbreviation{"KST", 540, false},  Abbreviation{"MDT", -360, true},
    Abbreviation{"MEST", 120, true},   Abbreviation{"MET", 60, false},   Abbreviation{"MSD", 240, true},
    Abbreviation{"MSK", 180, false},   Abbreviation{"MST", -420, false}, Abbreviation{"NDT", -150, true},
    Abbreviation{"NST", -210, false},  Abbreviation{"NZDT", 780, true},  Abbreviation{"NZST", 720, false},
    Abbreviation{"PDT", -420, true},   Abbreviation{"PKT", 300, false},  Abbreviation{"PST", -480, false},
    Abbreviation{"SAST", 120, false},  Abbreviation{"SGT", 480, false},  Abbreviation{"SST", -660, false},
    Abbreviation{"UT", 0, false},      Abbreviation{"UTC", 0, false},    Abbreviation{"WAT", 60, false},
    Abbreviation{"WEST", 60, true},    Abbreviation{"WET", 0, false},    Abbreviation{"WIB", 420, false},
    Abbreviation{"WIT", 540, false},   Abbreviation{"WITA", 480, false}, Abbreviation{"Z", 0, false},
};

constexpr bool byText(const Abbreviation &left, const Abbreviation &right) {
    return left.text < right.text;
}
static_assert(std::is_sorted(kAbbreviations.begin(), kAbbreviations.end(), byText));

/// Returns the place of `text` among the abbreviations, or their number when it is none.
std::size_t abbreviationIndex(std::string_view text) {
    const auto end = kAbbreviations.end();
    const auto found = std::lower_bound(kAbbreviations.begin(), end, Abbreviation{text, 0, false}, byText);
    return static_cast<std::size_t>((found != end && found->text == text ? found : end) -
                                    kAbbreviations.begin());
}

std::string offsetName(std::int32_t offset) {
    const int size = std::abs(offset);
    std::string name(1, offset < 0 ? '-' : '+');
    for (const int part : {size / 3600, size / 60 % 60, size % 60}) {
        name += static_cast<char>('0' + part / 10);
        name += static_cast<char>('0' + part % 10);
    }
    if (size % 60 == 0)
        name.resize(5);
    return name;
}

/// Takes up to `limit` digits from the front of `text`. Returns their value, or -1 when there are fewer than
/// `least`.
int takeDigits(std::string_view &text, std::size_t least, std::size_t limit) {
    std::size_t count = 0;
    int value = 0;
    for (; count < limit && count < text.size() && text[count] >= '0' && text[count] <= '9'; ++count)
        value = value * 10 + (text[count] - '0');
    text.remove_prefix(count);
    return count < least ? -1 : value;
}

/// Reads "GMT+h", "GMT+hh:mm", "+hh", "+hhmm" and "+hhmmss", with either sign, into seconds east of
/// Greenwich.
std::optional<std::int32_t> offsetFromName(std::string_view name) {
    const bool hasPrefix = name.substr(0, 3) == "GMT";
    if (hasPrefix)
        name.remove_prefix(3);
    if (name.empty() || (name.front() != '+' && name.front() != '-'))
        return std::nullopt;
    const int sign = name.front() == '-' ? -1 : 1;
    name.remove_prefix(1);
    const int hours = takeDigits(name, hasPrefix ? 1 : 2, 2);
    const bool isWholeHours = name.empty();
    if (hasPrefix && name.starts_with(':'))
        name.remove_prefix(1);
    const int minutes = isWholeHours ? 0 : takeDigits(name, 2, 2);
    const int seconds = name.empty() ? 0 : takeDigits(name, 2, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 59 ||
        !name.empty())
        return std::nullopt;
    return sign * (hours * 3600 + minutes * 60 + seconds);
}

bool isSafeName(std::string_view name) {
    return !name.empty() && name.size() <= kLongestZoneName && name.front() != '/' &&
           name.find('\0') == std::string_view::npos && name.find("..") == std::string_view::npos;
}

/// Returns the zone in the file `path`, or null. `error`: 0 or the number with which reading failed.
ZoneRef zoneFromFile(const std::string &path, std::string_view name, int &error, std::int32_t advance = 0) {
    std::string bytes;
    ZoneData data;
    error = readZoneFile(path, bytes);
    if (error != 0 || !parseZoneFile(bytes, data))
        return nullptr;
    return std::make_shared<const Zone>(std::string(name), std::move(data), advance);
}

/// Returns whether asking again would give no zone again. A passing want of descriptors, say, must not make a
/// zone unknown for ever.
bool isLasting(int error) {
    return error == 0 || error == ENOENT || error == ENOTDIR || error == EISDIR || error == EFBIG;
}

ZoneRef databaseZone(std::string_view entry, std::string_view name, int &error, std::int32_t advance = 0) {
    error = 0;
    if (!isSafeName(entry))
        return nullptr;
    return zoneFromFile(zoneDirectory().append(entry), name, error, advance);
}

/// Returns the zone `base` with clocks one hour ahead, called `name`; null when there is no such zone.
ZoneRef zoneAhead(std::string_view base, std::string_view name, int &error) {
    if (const std::size_t index = abbreviationIndex(base); index < kAbbreviations.size())
        return fixedZone(kAbbreviations[index].minutes * 60 + 3600, name, true);
    if (const auto offset = offsetFromName(base))
        return fixedZone(*offset + 3600, name, true);
    return databaseZone(base, name, error, 3600);
}

ZoneRef findZone(std::string_view name, int &error) {
    error = 0;
    if (name == "GMT")
        return utc();
    if (name == "UTC")
        return fixedZone(0, name);
    if (const auto offset = offsetFromName(name))
        return fixedZone(*offset, name);
    if (name.ends_with(kAheadSuffix))
        return zoneAhead(name.substr(0, name.size() - kAheadSuffix.size()), name, error);
    ZoneRef zone = databaseZone(name, name, error);
    if (!zone && isLasting(error))
        for (const auto &[formerName, todaysName] : kFormerNames)
            if (formerName == name)
                return databaseZone(todaysName, name, error);
    return zone;
}

/// Returns the zone of a TZ text, in the C library's order: a file, then a rule.
ZoneRef zoneFromSetting(std::string_view setting, int &error) {
    if (setting.starts_with(':'))
        setting.remove_prefix(1);
    if (const std::string directory = zoneDirectory(); setting.starts_with(directory))
        setting.remove_prefix(directory.size());
    ZoneRef zone = setting.starts_with('/') ? zoneFromFile(std::string(setting), setting, error)
                                            : databaseZone(setting, setting, error);
    return zone || !isLasting(error) ? zone : zoneFromRule(setting);
}

/// Returns the zone of /etc/localtime: by the name that the link leads to, so that it can be found again
/// elsewhere.
ZoneRef zoneFromLocalTime(int &error) {
    constexpr std::string_view kMark = "/zoneinfo/";
    char target[1024];
    const ssize_t length = sys::readlink(kLocalTime, target, sizeof target);
    const std::string_view path(target, length > 0 ? static_cast<std::size_t>(length) : 0);
    if (const std::size_t mark = path.find(kMark); mark != std::string_view::npos) {
        const std::string_view name = path.substr(mark + kMark.size());
        ZoneRef zone = databaseZone(name, name, error);
        if (zone || !isLasting(error))
            return zone;
    }
    return zoneFromFile(kLocalTime, "localtime", error);
}

/// The variable TZ of the environment.
///
/// Looking for it takes longer than writing a date. Where it was found, or the end of the environment, is
/// looked at first: `setenv` and its like change that place, the one before it, or the whole list.
class ZoneVariable {
public:
    /// Whether the variable is still where it was found, and what it was.
    bool isInPlace() const {
        char *const *const list = sys::environment();
        // The first entry tells another list in the same memory, which may be shorter.
        return list && list == list_ && list[0] == first_ && list[place_] == entry_ &&
               (place_ == 0 || list[place_ - 1] == before_) &&
               (!entry_ || std::strcmp(text_.c_str(), entry_) == 0);
    }

    /// Looks for the variable. Returns whether it is what it was at the last time.
    bool find() {
        const std::string textBefore = std::move(text_);
        text_.clear();
        list_ = sys::environment();
        place_ = 0;
        if (list_) {
            while (list_[place_] && std::strncmp(list_[place_], kName.data(), kName.size()) != 0)
                ++place_;
            first_ = list_[0];
            before_ = place_ == 0 ? nullptr : list_[place_ - 1];
            entry_ = list_[place_];
            text_ = entry_ ? entry_ : "";
        }
        return text_ == textBefore;
    }

    /// Returns the value found; null when the variable is not set.
    const char *value() const { return text_.empty() ? nullptr : text_.c_str() + kName.size(); }

private:
    static constexpr std::string_view kName = "TZ=";

    char *const *list_ = nullptr;
    std::size_t place_ = 0;
    const char *first_ = nullptr, *before_ = nullptr, *entry_ = nullptr;
    std::string text_; // the entry's; empty when there is none
};

/// The file of the zone where TZ is not set.
class LocalTimeFile {
public:
    /// Whether it is another one than before. Once a second will do: looking takes longer than writing a
    /// date.
    bool hasChanged() {
        const std::int64_t now = sys::wallSeconds();
        return std::exchange(lookedAt_, now) != now && look();
    }

private:
    // Which file it is, and when anything of it changed last: the database's files have the same times, which
    // copies keep.
    using Version = std::tuple<dev_t, ino_t, std::int64_t, std::int64_t>;

    static Version versionIn(int result, const struct stat &status) {
        return result != 0
                   ? Version()
                   : Version(status.st_dev, status.st_ino, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
    }
    // One file of the database has several names, so that the link counts too.
    bool look() {
        struct stat status;
        const Version link = versionIn(sys::lstat(kLocalTime, &status), status);
        const Version file = versionIn(sys::stat(kLocalTime, &status), status);
        const bool isAsBefore = link == link_ && file == file_;
        link_ = link;
        file_ = file;
        return !isAsBefore;
    }

    std::int64_t lookedAt_ = -1;
    Version link_, file_;
};

struct SystemZone {
    ZoneVariable variable;
    LocalTimeFile file;
    ZoneRef zone; // null: to be found
};

SystemZone &keptSystemZone() {
    static auto *const kept = new SystemZone;
    return *kept;
}

const ZoneRef &findSystemZone(SystemZone &kept) {
    static const auto &unknown = *new ZoneRef(zoneNamed("UTC"));
    if (kept.variable.find() && kept.zone)
        return kept.zone;
    const char *const setting = kept.variable.value();
    if (!setting)
        kept.file.hasChanged(); // what is read now is what it is compared with
    int error = 0;
    kept.zone = setting ? zoneFromSetting(setting, error) : zoneFromLocalTime(error);
    if (!kept.zone && isLasting(error))
        kept.zone = unknown;
    return kept.zone ? kept.zone : unknown;
}

} // namespace

std::string zoneDirectory() {
    const char *const chosen = sys::getenv("TZDIR");
    return chosen && *chosen ? std::string(chosen) + '/' : "/usr/share/zoneinfo/";
}

const ZoneRef &utc() {
    static const auto *const zone = new ZoneRef(fixedZone(0));
    return *zone;
}

ZoneRef fixedZone(std::int32_t offset, std::string_view name, bool isDst) {
    if (offset < -kMaxZoneOffset || offset > kMaxZoneOffset)
        return nullptr;
    ZoneData data;
    data.names = !name.empty() ? std::string(name) : offset == 0 ? "GMT" : offsetName(offset);
    data.types.push_back({offset, isDst, 0, static_cast<std::uint32_t>(data.names.size())});
    std::string zoneName = data.names;
    return std::make_shared<const Zone>(std::move(zoneName), std::move(data));
}

ZoneRef zoneNamed(std::string_view name) {
    static auto &cache = *new std::map<std::string, ZoneRef, std::less<>>;
    if (name.empty() || name.size() > kLongestZoneName)
        return nullptr;
    if (const auto found = cache.find(name); found != cache.end())
        return found->second;
    int error = 0;
    ZoneRef zone = findZone(name, error);
    if (!zone && !isLasting(error))
        return nullptr;
    if (cache.size() >= kCacheLimit)
        cache.clear();
    cache.emplace(name, zone);
    return zone;
}

ZoneRef zoneForAbbreviation(std::string_view abbreviation) {
    static auto &made = *new std::array<ZoneRef, kAbbreviations.size()>;
    const std::size_t index = abbreviationIndex(abbreviation);
    if (index == kAbbreviations.size())
        return nullptr;
    const Abbreviation &entry = kAbbreviations[index];
    if (!made[index])
        made[index] = fixedZone(entry.minutes * 60, entry.text, entry.isDst);
    return made[index];
}

ZoneRef zoneFromRule(std::string_view rule) {
    ZoneData data;
    if (rule.size() <= kLongestZoneName)
        data.rule = parsePosixRule(rule);
    if (!data.rule)
        return nullptr;
    data.names = data.rule->standardName;
    data.types.push_back(
        {data.rule->standardOffset, false, 0, static_cast<std::uint32_t>(data.names.size())});
    return std::make_shared<const Zone>(std::string(rule), std::move(data));
}

const ZoneRef &systemZone() {
    SystemZone &kept = keptSystemZone();
    if (kept.zone && kept.variable.isInPlace()) {
        if (kept.variable.value() || !kept.file.hasChanged()) [[likely]]
            return kept.zone;
        kept.zone = nullptr;
    }
    return findSystemZone(kept);
}

void resetSystemZone() {
    keptSystemZone().zone = nullptr;
}

} // namespace qb::calendar
