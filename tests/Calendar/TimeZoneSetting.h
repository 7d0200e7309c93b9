// The TZ variable for the length of a test.
#ifndef QB_TESTS_CALENDAR_TIMEZONESETTING_H
#define QB_TESTS_CALENDAR_TIMEZONESETTING_H

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

class TimeZoneSetting {
public:
    /// Null unsets the variable.
    explicit TimeZoneSetting(const char *setting) {
        if (const char *const value = std::getenv("TZ"))
            before_ = value;
        set(setting);
    }
    ~TimeZoneSetting() { set(before_ ? before_->c_str() : nullptr); }
    TimeZoneSetting(const TimeZoneSetting &) = delete;
    TimeZoneSetting &operator=(const TimeZoneSetting &) = delete;

    static void set(const char *setting) {
        if (setting)
            setenv("TZ", setting, 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    std::optional<std::string> before_;
};

#endif
