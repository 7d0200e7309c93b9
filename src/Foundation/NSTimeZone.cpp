#include <QBFoundation/Foundation/NSTimeZone.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSDate.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Calendar/Zone.h"
#include "Foundation/DateParts.h"
#include "System/Clock.h"
#include "System/Files.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;

std::int64_t now() {
    return qb::calendar::floorDiv(qb::sys::wallMilliseconds(), kMillisecondsPerSecond);
}

std::int64_t secondsOf(NSDate *date) {
    return date ? qb::utcSecondsOf(date->timeIntervalSinceReferenceDate()) : now();
}

// The zones that the process keeps, never destroyed because objects may outlive main().
struct ProcessZones {
    Ref<NSTimeZone> system; // as it was when it was last asked for
    Ref<NSTimeZone> chosen; // null: the system's is the default
};

ProcessZones &processZones() {
    static auto *const zones = new ProcessZones;
    return *zones;
}

/// Whether the database has a zone or a directory of zones under that name. Its other entries are copies of
/// all zones with another count of leap seconds, and tables; they begin with a small letter or have a point.
bool isZoneName(std::string_view name) {
    return !name.empty() && name.front() >= 'A' && name.front() <= 'Z' &&
           name.find('.') == std::string_view::npos;
}

/// Appends the zones of a directory to `names` and its directories to `directories`, both relative to the
/// database.
void listZones(const std::string &directory, std::vector<std::string> &names,
               std::vector<std::string> &directories) {
    const std::string path = qb::calendar::zoneDirectory() + directory;
    const auto close = [](DIR *open) { qb::sys::closedir(open); };
    const std::unique_ptr<DIR, decltype(close)> open(qb::sys::opendir(path.c_str()), close);
    if (!open)
        return;
    while (const dirent *entry = qb::sys::readdir(open.get())) {
        struct stat info;
        if (!isZoneName(entry->d_name) || qb::sys::stat((path + "/" + entry->d_name).c_str(), &info) != 0)
            continue;
        if (S_ISREG(info.st_mode))
            names.push_back(directory + entry->d_name);
        else if (S_ISDIR(info.st_mode))
            directories.push_back(directory + entry->d_name + "/");
    }
}

} // namespace

Class *NSTimeZone::cls() {
    static const qb::Method methods[] = {
        qb::initialiser<"initWithName:">(&NSTimeZone::setUpWithName),
        qb::maker<"timeZoneWithName:">(&NSTimeZone::setUpWithName),
        qb::maker<"timeZoneWithAbbreviation:">(&NSTimeZone::setUpWithAbbreviation),
        qb::maker<"timeZoneForSecondsFromGMT:">(&NSTimeZone::setUpForSecondsFromGMT),
        qb::classMethod<"gmt">(&NSTimeZone::gmt),
        qb::classMethod<"systemTimeZone">(&NSTimeZone::systemTimeZone),
        qb::classMethod<"resetSystemTimeZone">(&NSTimeZone::resetSystemTimeZone),
        qb::classMethod<"defaultTimeZone">(&NSTimeZone::defaultTimeZone),
        qb::classMethod<"setDefaultTimeZone:">(&NSTimeZone::setDefaultTimeZone),
        qb::classMethod<"localTimeZone">(&NSTimeZone::localTimeZone),
        qb::classMethod<"knownTimeZoneNames">(&NSTimeZone::knownTimeZoneNames),
        qb::method<"name">(&NSTimeZone::name),
        qb::method<"secondsFromGMT">(&NSTimeZone::secondsFromGMT),
        qb::method<"secondsFromGMTForDate:">(&NSTimeZone::secondsFromGMTForDate),
        qb::method<"abbreviation">(&NSTimeZone::abbreviation),
        qb::method<"abbreviationForDate:">(&NSTimeZone::abbreviationForDate),
        qb::method<"isDaylightSavingTime">(&NSTimeZone::isDaylightSavingTime),
        qb::method<"isDaylightSavingTimeForDate:">(&NSTimeZone::isDaylightSavingTimeForDate),
        qb::method<"isEqualToTimeZone:">(&NSTimeZone::isEqualToTimeZone),
        qb::initialiser<"initWithCoder:">(&NSTimeZone::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&NSTimeZone::encodeWithCoder),
    };
    static Class *const self = new Class("NSTimeZone", NSObject::cls(), methods, qb::construct<NSTimeZone>,
                                         {"NSCopying", "NSCoding"});
    return self;
}

NSTimeZone::NSTimeZone() : zone_(qb::calendar::utc()) {}
NSTimeZone::~NSTimeZone() = default;

BOOL NSTimeZone::setUpWithRules(Rules zone) {
    if (!zone)
        return NO;
    zone_ = std::move(zone);
    return YES;
}

BOOL NSTimeZone::setUpWithName(NSString *name) {
    return name && setUpWithRules(qb::calendar::zoneNamed(name->view()));
}

BOOL NSTimeZone::setUpWithAbbreviation(NSString *abbreviation) {
    return abbreviation && (setUpWithRules(qb::calendar::zoneForAbbreviation(abbreviation->view())) ||
                            setUpWithName(abbreviation));
}

BOOL NSTimeZone::setUpForSecondsFromGMT(std::int32_t seconds) {
    return setUpWithRules(qb::calendar::fixedZone(seconds));
}

NSTimeZone *NSTimeZone::gmt() {
    static NSTimeZone *const zone = new NSTimeZone;
    return zone;
}

NSTimeZone *NSTimeZone::systemTimeZone() {
    Ref<NSTimeZone> &kept = processZones().system;
    const Rules &rules = qb::calendar::systemZone();
    if (!kept || kept->zone_ != rules) {
        const Ref<NSTimeZone> zone = Ref<NSTimeZone>::adopt(new NSTimeZone);
        zone->setUpWithRules(rules);
        kept = zone;
    }
    return Ref<NSTimeZone>(kept).autorelease();
}

void NSTimeZone::resetSystemTimeZone() {
    qb::calendar::resetSystemZone();
}

NSTimeZone *NSTimeZone::defaultTimeZone() {
    const Ref<NSTimeZone> &chosen = processZones().chosen;
    return chosen ? Ref<NSTimeZone>(chosen).autorelease() : systemTimeZone();
}

void NSTimeZone::setDefaultTimeZone(NSTimeZone *zone) {
    processZones().chosen = zone;
}

NSArray *NSTimeZone::knownTimeZoneNames() {
    std::vector<std::string> names;
    std::vector<std::string> directories = {""};
    while (!directories.empty()) {
        const std::string directory = std::move(directories.back());
        directories.pop_back();
        listZones(directory, names, directories);
    }
    if (std::find(names.begin(), names.end(), "GMT") == names.end())
        names.push_back("GMT"); // known without a database
    std::sort(names.begin(), names.end());
    NSMutableArray *const list = NSMutableArray::arrayWithCapacity(static_cast<std::uint32_t>(names.size()));
    for (const std::string &name : names) {
        const Ref<NSString> string = NSString::initWith(name);
        list->addObject(string);
    }
    return list;
}

NSString *NSTimeZone::name() const {
    return NSString::stringWith(zone_->name());
}

std::int32_t NSTimeZone::secondsFromGMT() const {
    return secondsFromGMTForDate(nullptr);
}

std::int32_t NSTimeZone::secondsFromGMTForDate(NSDate *date) const {
    return zone_->offsetAt(secondsOf(date)).seconds;
}

NSString *NSTimeZone::abbreviation() const {
    return abbreviationForDate(nullptr);
}

NSString *NSTimeZone::abbreviationForDate(NSDate *date) const {
    return NSString::stringWith(zone_->offsetAt(secondsOf(date)).abbreviation);
}

BOOL NSTimeZone::isDaylightSavingTime() const {
    return isDaylightSavingTimeForDate(nullptr);
}

BOOL NSTimeZone::isDaylightSavingTimeForDate(NSDate *date) const {
    return zone_->offsetAt(secondsOf(date)).isDst;
}

BOOL NSTimeZone::isEqual(id other) const {
    return isEqualToTimeZone(qb::castOrNil<NSTimeZone>(other));
}

BOOL NSTimeZone::isEqualToTimeZone(NSTimeZone *other) const {
    if (!other || zone_ == other->zone_)
        return other != nullptr;
    if (zone_->name() != other->zone_->name() || zone_->isFixed() != other->zone_->isFixed())
        return NO;
    if (!zone_->isFixed())
        return YES;
    const qb::calendar::ZoneOffset mine = zone_->offsetAt(0), others = other->zone_->offsetAt(0);
    return mine.seconds == others.seconds && mine.isDst == others.isDst;
}

std::uint32_t NSTimeZone::hash() const {
    return name()->hash();
}
