#include "support/Locales.h"
#include "support/ServicesFixture.h"
#include "support/Terminal.h"

const iconv_t kNone = reinterpret_cast<iconv_t>(-1);

const iconv_t kLatin = ::iconv_open("ISO-8859-1", "UTF-8"); // stays open
const iconv_t kShifting = ::iconv_open("UTF-7", "UTF-8");
const iconv_t kIgnoring = ::iconv_open("ISO-8859-1//IGNORE", "UTF-8");

// Texts are printed as UTF-8 unless a test says otherwise.
struct OSUserIOTest : ServicesFixture {
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

TEST_F(OSUserIOTest, PrintsOnBothStreamsWithAndWithoutALineEnd) {
    CapturedOutput output(STDOUT_FILENO);
    CapturedOutput error;
    OSUserIO::print("a"_ns);
    OSUserIO::printLn("b\xC3\xA4"_ns);
    OSUserIO::print("c"_ns, /*withNewLine=*/YES);
    OSUserIO::printLn();
    const Fault storm(Call::fwrite, /*skip=*/0, /*times=*/5, EINTR); // standard error has no buffer
    OSUserIO::eprint("d"_ns);
    OSUserIO::eprintLn(NSString::stringWith({"e\0f", 3}));
    OSUserIO::eprint(nullptr, /*withNewLine=*/YES);
    OSUserIO::eprintLn();
    EXPECT_EQ(output.end(), "ab\xC3\xA4\nc\n\n");
    EXPECT_EQ(error.end(), "de\n\n\n");
    EXPECT_REASON(OSUserIO::printOn("a"_ns, nullptr, /*withNewLine=*/NO),
                  "OSUserIO print:on:withNewLine: must have a file that is not NULL.");
}

TEST_F(OSUserIOTest, ConversionPassesOnWhatItCannotConvert) {
    const std::pair<std::string, std::string> rows[] = {
        {"gr\xC3\xBC\xC3\x9F", "gr\xFC\xDF"},
        {"a\xFF z", "a\xFF z"},                                 // no UTF-8
        {"\xC4\x80-\xE2\x82\xAC-e", "\xC4\x80-\xE2\x82\xAC-e"}, // not in the character set
        {"cut \xC3", "cut "},                                   // incomplete at the end
        {std::string(30000, 'x') + "\xC3\xBC", std::string(30000, 'x') + "\xFC"},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(converted(kLatin, text), expected);
    EXPECT_EQ(converted(kShifting, "\xC3\xBC"), "+APw-"); // back in the first state
    EXPECT_EQ(converted(kIgnoring, "a\xC3\xA9\xE2\x82\xAC"), "a\xE9");
}

TEST_F(OSUserIOTest, TextsAndLogLinesAreConvertedWhole) {
    _iconvHandle = kLatin;
    CapturedOutput error;
    std::string text, expected; // with bytes that can't be converted at any distance
    for (std::size_t distance = 0; distance < 40; ++distance) {
        text += "\u65E5" + std::string(distance, '.') + "\u00FC";
        expected += "\u65E5" + std::string(distance, '.') + "\xFC";
    }
    OSUserIO::eprint(NSString::stringWith(text));
    OSUserIO::eprintLn("gr\xC3\xBC\xC3\x9F\xC3"_ns); // the last one is cut off
    OSUserIO::setOutputConversionCallback([](iconv_t, NSString *) { return "ignored"_ns; });
    OSLogger::setDefaultLogFileName(path("log"));
    OSLogger::loggerForCategory(""_ns)->logWithLevelMessage(0, "\xC3\xBC"_ns);
    _iconvHandle = kNone;
    EXPECT_EQ(logLines(error.end()), expected + "gr\xFC\xDF\n[T] (P) [] \xFC\n");
    EXPECT_EQ(logLines(directory_.read("log")), "[T] (P) [] \xFC\n");
}

TEST_F(OSUserIOTest, TheLocaleGivesTheCharacterSet) {
    CapturedOutput error;
    if (haveLocale("de_DE.ISO-8859-1")) {
        setLocale("de_DE.ISO-8859-1");
        OSUserIO::eprintLn("gr\xC3\xBC"_ns);
        EXPECT_EQ(error.text(), "gr\xFC\n");
    }
    setLocale("C");
    setLocale("nowhere");
    EXPECT_EQ(_iconvHandle, kNone);
    Fault fault(Call::iconv_open, /*skip=*/0, /*times=*/1, EINVAL);
    setLocale("C");
    EXPECT_EQ(_iconvHandle, kNone);
    EXPECT_EQ(error.end(),
              "The locale is not specified.\n"
              "Please check the environment variables LANG, LC_CTYPE, or LC_ALL.\n"
              "All terminal output will be UTF-8 encoded.\n"
              "The conversion to terminal charset ANSI_X3.4-1968 is not supported: Invalid argument\n"
              "All terminal output will be UTF-8 encoded.\n");
}

// --- Asking ---

static OSMultipleChoiceDescription *yesOrNo() {
    OSMultipleChoiceDescription *const choices = OSMultipleChoiceDescription::multipleChoiceDescription();
    choices->setDescriptionString("Yes"_ns, 'y');
    choices->setDescriptionString("No"_ns, 'n');
    return choices;
}

// Prints the errors that were raised, and takes them away.
static void printErrors() {
    for (const auto &error : recordingErrorHandler()->raised)
        OSUserIO::printLn(NSString::stringWith(std::to_string(error.number) + ": " + error.values));
    recordingErrorHandler()->raised.clear();
    ERRORHANDLER->clearErrorStack();
}

static void ask(const char *question) {
    NSString *const answer = OSUserIO::askUserForStringWithQuestion(NSString::stringWith(question));
    OSUserIO::printLn(NSString::stringWith("[" + describe(answer) + "]"));
    printErrors();
}

TEST_F(OSUserIOTest, TheUserAnswersWithALine) {
    const std::string answers[] = {"Ada Gr\xC3\xBC\xC3\x9F", std::string(999, 'x'), std::string(1000, 'x'),
                                   ""};
    Terminal terminal([&] {
        for ([[maybe_unused]] const std::string &answer : answers)
            ask("Name?");
        ask("End?");
        ask("Again?");
        ::close(STDIN_FILENO);
        ask("Closed?");
    });
    std::string expected;
    for (const std::string &answer : answers) {
        EXPECT_TRUE(terminal.answer("> ", answer + "\n"));
        expected += "Name?\n> [" + answer + "]\n";
    }
    EXPECT_TRUE(terminal.answer("> ", Terminal::kEnd));
    EXPECT_TRUE(
        terminal.answer("> ", std::string("here") + Terminal::kEnd + Terminal::kEnd)); // without a line end
    EXPECT_EQ(terminal.end(), expected +
                                  "End?\n> []\n900040: end of input\nAgain?\n> [here]\n900040: end of input\n"
                                  "Closed?\n> []\n900040: Bad file descriptor\n");
}

TEST_F(OSUserIOTest, TheUserChoosesOneOfTheDescribedCharacters) {
    Terminal terminal([] {
        const auto choose = [](NSString *question) {
            const char choice = OSUserIO::askMultipleChoice(yesOrNo(), question);
            OSUserIO::printLn(NSString::stringWith("[" + std::string(1, choice ? choice : '0') + "]"));
            printErrors();
        };
        choose("Sure?"_ns);
        choose(nullptr);
        choose("End?"_ns);
    });
    for (const char *answer : {"x\n", "\n", "yes\n", "ny\n", Terminal::kEnd})
        EXPECT_TRUE(terminal.answer("> ", answer));
    const std::string choices = "y - Yes\nn - No\n> ";
    EXPECT_EQ(terminal.end(), "Sure?\n" + choices + "Sure?\n" + choices + "Sure?\n" + choices + "[y]\n" +
                                  "Choose one of the following options!\n" + choices + "[n]\n" + "End?\n" +
                                  choices + "[0]\n900040: end of input\n");
}

TEST_F(OSUserIOTest, ADescriptionKeepsItsChoicesInOrder) {
    OSMultipleChoiceDescription *const choices = yesOrNo();
    const Ref<OSMultipleChoiceDescription> copy = choices->copy();
    choices->setDescriptionString("Never"_ns, 'n');
    choices->setDescriptionString("Other"_ns, '\xFE');
    choices->setDescriptionString(nullptr, 'y');
    EXPECT_EQ(describe(choices->asFormattedString()), "n - Never\n\xFE - Other\n");
    choices->setDescriptionString("Again"_ns, 'y');
    EXPECT_EQ(describe(choices->asFormattedString()), "y - Again\nn - Never\n\xFE - Other\n");
    EXPECT_EQ(describe(copy->asFormattedString()), "y - Yes\nn - No\n");
    EXPECT_REASON(
        choices->setDescriptionString("x"_ns, '\xFF'),
        "OSMultipleChoiceDescription setDescriptionString:forCharacter: must have a character with a code "
        "below 255.");
}
