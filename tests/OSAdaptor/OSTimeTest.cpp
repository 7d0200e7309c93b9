#include "Calendar/TimeZoneSetting.h"
#include "support/DirectoryFixture.h"

using OSTimeTest = DirectoryFixture;

// The C library's text for the current second.
static std::string localTimeText() {
    const std::time_t now = std::time(nullptr);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
    return text;
}

TEST_F(OSTimeTest, TheTimeIsLocalAndFollowsTheZoneAtOnce) {
    for (const char *zone : {"UTC", "XYZ-5:45", "UTC"}) {
        const TimeZoneSetting setting(zone);
        const std::string before = localTimeText();
        EXPECT_NEAR(static_cast<double>(OSTime::currentTimeMillis()) / 1000, std::time(nullptr), 2);
        const std::string text(OSTime::timeAsStringInSystemFormat()->view());
        EXPECT_LE(before, text);
        EXPECT_LE(text, localTimeText());
    }
}

TEST_F(OSTimeTest, AliasesStandForOtherZones) {
    std::string zones;
    for (const char *name :
         {"TAI",  "UT",   "Z",   "IST",  "WEST", "WAT", "AT",   "MT",   "PT",  "CAT",  "AHST",
          "AKST", "AKDT", "CCT", "EAST", "EADT", "NT",  "IDLW", "FWT",  "FST", "MEZ",  "MESZ",
          "MEST", "MEWT", "SWT", "EEST", "BT",   "MSK", "WAST", "WADT", "GST", "IDLE", "Europe/Berlin"})
        zones += describe(OSTime::timeZoneWithName(NSString::stringWith(name))) + " ";
    EXPECT_EQ(zones, "GMT GMT GMT GB-Eire WET DST GMT-1 GMT-2 MST PST HST HST HST HDT GMT+8 EST EDT GMT-11 "
                     "GMT-12 CET CET CET CEST CEST CET CET EET DST GMT+3 W-SU Australia/West Australia/West "
                     "GMT+10 GMT+12 Europe/Berlin ");
    EXPECT_EQ(OSTime::timeZoneWithName(NSString::stringWith({"MEZ\0", 4})), nullptr);
    EXPECT_EQ(OSTime::timeZoneWithName(nullptr), NSTimeZone::defaultTimeZone());
}

TEST_F(OSTimeTest, TheSystemsZoneIsNamedByItsStandardTime) {
    const TimeZoneSetting setting("Europe/Berlin");
    EXPECT_EQ(describe(OSTime::timeZone()), "CET");
    TimeZoneSetting::set("America/Anchorage");
    EXPECT_EQ(describe(OSTime::timeZone()), "HST");
    TimeZoneSetting::set("XYZ-5:45");
    EXPECT_EQ(OSTime::timeZone(), nullptr);
    for (id name : *NSTimeZone::knownTimeZoneNames()) {
        TimeZoneSetting::set(name->cStringValue());
        EXPECT_NE(OSTime::timeZone(), nullptr) << describe(name);
    }
}

TEST_F(OSTimeTest, WithoutANameTheZoneIsTheOffsetOfNow) {
    // A zone file: the clocks are 5400 s ahead, from 1970 on 9000 s as daylight saving time; both without a
    // name.
    const auto file = [](bool isAdvanced) {
        const char counts[] = {0, 0, 0, static_cast<char>(isAdvanced ? 2 : 0), 0, 0, 0, 2, 0, 0, 0, 1};
        const char types[] = {0, 0, 0x15, 0x18, 0, 0, 0, 0, 0x23, 0x28, 1, 0};
        const std::string changes = isAdvanced ? std::string("\xFF\xFF\0\0\0\0\0\0\0\1", 10) : "";
        return "TZif" + std::string(28, '\0') + std::string(counts, sizeof counts) + changes +
               std::string(types, sizeof types) + '\0';
    };
    directory_.write("standard", file(false));
    directory_.write("advanced", file(true));
    const TimeZoneSetting setting((directory_ / "standard").c_str());
    EXPECT_EQ(describe(OSTime::timeZone()), "+0130");
    TimeZoneSetting::set((directory_ / "advanced").c_str());
    EXPECT_EQ(describe(OSTime::timeZone()), "+0230");
}
