#include <QBFoundation/OSAdaptor/OSUserIO.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>

#include "System/Faults.h"
#include "support/ServicesFixture.h"
#include "support/TemporaryDirectory.h"

#include <clocale>
#include <cstdlib>

namespace {

using qb::sys::Call;
using qb::sys::Fault;

const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

// A conversion from UTF-8, closed at its end.
class Handle {
public:
    explicit Handle(const char *characterSet) : handle_(::iconv_open(characterSet, "UTF-8")) {}
    ~Handle() { ::iconv_close(handle_); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    operator iconv_t() const { return handle_; }

private:
    iconv_t handle_;
};

// Texts are printed as UTF-8 unless a test says otherwise.
class OSUserIOTest : public ServicesFixture {
protected:
    OSUserIOTest() { setLocale("C.UTF-8"); }
    ~OSUserIOTest() override { setLocale("C.UTF-8"); }

    static void setLocale(const char *name) {
        ::setenv("LC_ALL", name, 1);
        OSUserIO::initialize();
    }

    static std::string converted(iconv_t handle, std::string_view text) {
        return std::string(defaultConversionCallback(handle, NSString::stringWith(text))->view());
    }
};

} // namespace

TEST_F(OSUserIOTest, PrintsOnBothStreamsWithAndWithoutALineEnd) {
    CapturedOutput output(STDOUT_FILENO);
    CapturedOutput error;
    OSUserIO::print("a"_ns);
    OSUserIO::printLn("b\xC3\xA4"_ns);
    OSUserIO::print("c"_ns, /*withNewLine=*/YES);
    OSUserIO::printLn();
    OSUserIO::print(nullptr);
    OSUserIO::eprint("d"_ns);
    OSUserIO::eprintLn(NSString::stringWith({"e\0f", 3}));
    OSUserIO::eprint(nullptr, /*withNewLine=*/YES);
    OSUserIO::eprintLn();
    const std::string printed = output.end();
    EXPECT_EQ(printed, "ab\xC3\xA4\nc\n\n");
    EXPECT_EQ(error.end(), "de\n\n\n");
    EXPECT_REASON(OSUserIO::printOn("a"_ns, nullptr, /*withNewLine=*/NO),
                  "OSUserIO print:on:withNewLine: must have a file that is not NULL.");
}

TEST_F(OSUserIOTest, ConversionPassesOnWhatItCannotConvert) {
    const Handle latin("ISO-8859-1");
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"gr\xC3\xBC\xC3\x9F", "gr\xFC\xDF"},
        {"a\xFF z", "a\xFF z"},                                 // no UTF-8
        {"\xC4\x80-\xE2\x82\xAC-e", "\xC4\x80-\xE2\x82\xAC-e"}, // not in the character set
        {"cut \xC3", "cut "},                                   // incomplete at the end
        {std::string(30000, 'x') + "\xC3\xBC", std::string(30000, 'x') + "\xFC"},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(converted(latin, text), expected);
    EXPECT_EQ(converted(kNone, "gr\xC3\xBC"), "gr\xC3\xBC");
    EXPECT_EQ(defaultConversionCallback(latin, nullptr), nullptr);
}

TEST_F(OSUserIOTest, EachTextLeavesTheShiftStateAsItFoundIt) {
    const Handle japanese("ISO-2022-JP");
    const std::string once = "\x1B$B$\"\x1B(B";
    EXPECT_EQ(converted(japanese, "\xE3\x81\x82"), once);
    EXPECT_EQ(converted(japanese, "\xE3\x81\x82"), once);
    {
        Fault fault(Call::iconv, /*skip=*/0, /*times=*/1, EBADF);
        EXPECT_EQ(converted(japanese, "\xE3\x81\x82"), "\xE3\x81\x82");
    }
    EXPECT_EQ(converted(japanese, "a"), "a");
}

TEST_F(OSUserIOTest, TextsAndLogLinesAreConvertedWhole) {
    const TemporaryDirectory directory;
    const Handle latin("ISO-8859-1");
    _iconvHandle = latin;
    CapturedOutput error;
    OSUserIO::eprintLn("gr\xC3\xBC\xC3\x9F"_ns);
    OSUserIO::setOutputConversionCallback([](iconv_t, NSString *) { return "ignored"_ns; });
    OSLogger::setDefaultLogFileName(directory.string("log"));
    OSLogger::loggerForCategory(""_ns)->logWithLevelMessage(0, "\xC3\xBC"_ns);
    _iconvHandle = kNone;
    EXPECT_EQ(logLines(error.end()), "gr\xFC\xDF\n[T] (P) [] \xFC\n");
    EXPECT_EQ(logLines(directory.read("log")), "[T] (P) [] \xFC\n");
}

TEST_F(OSUserIOTest, TheLocaleGivesTheCharacterSet) {
    CapturedOutput error;
    setLocale("C.UTF-8");
    EXPECT_EQ(_iconvHandle, kNone);
    setLocale("C");
    EXPECT_NE(_iconvHandle, kNone);
    OSUserIO::eprintLn("gr\xC3\xBC"_ns); // ASCII has no such letter
    setLocale("nowhere");
    EXPECT_EQ(_iconvHandle, kNone);
    {
        Fault fault(Call::iconv_open, /*skip=*/0, /*times=*/1, EINVAL);
        setLocale("C");
    }
    EXPECT_EQ(_iconvHandle, kNone);
    EXPECT_EQ(error.end(),
              "gr\xC3\xBC\n"
              "The locale is not specified.\n"
              "Please check the environment variables LANG, LC_CTYPE, or LC_ALL.\n"
              "All terminal output will be UTF-8 encoded.\n"
              "The conversion to terminal charset ANSI_X3.4-1968 is not supported: Invalid argument\n"
              "All terminal output will be UTF-8 encoded.\n");
}
