#include "Text/CpuLevels.h"
#include "support/CommandOutput.h"
#include "support/DirectoryFixture.h"
#include "support/Locales.h"
#include "support/PlainTexts.h"

#include <cctype>
#include <climits>

using QBStringBinaryTextsTest = DirectoryFixture;
using QBStringURLEscapingTest = PoolFixture;
using QBStringMoneySupportTest = PoolFixture;

TEST_F(QBStringBinaryTextsTest, Base64OfATextIsDecoded) {
    EXPECT_EQ(bytesOf(string("TWFu IGlz\n")->decodeBase64()), "Man is");
    const ErrorExpectation error(50052);
    EXPECT_EQ(bytesOf(string({"TWFu\0TWF", 8})->decodeBase64()), "Man");
}

// Files of 0 to 999 bytes, by one run of the encoder.
TEST_F(QBStringBinaryTextsTest, FilesOfAnotherEncoderComeBack) {
    Random random;
    const std::string bytes = randomBytes(random, 999 * 1000 / 2);
    directory_.write("bytes", bytes);
    const std::string texts = outputOf(R"(perl -e '
        for (0..999) {
            read STDIN, $file, $_;
            print "junk\nbegin 644 name\n", pack("u", $file), "`\nend\nmore\n\0";
        }' <)" + directory_ / "bytes");
    if (texts.empty())
        GTEST_SKIP() << "perl is not installed";
    std::size_t start = 0, begin = 0;
    for (std::size_t length = 0; length < 1000; begin += length++) {
        const std::string text = texts.substr(start, texts.find('\0', start) - start);
        ASSERT_EQ(bytesOf(string(text)->uudecode()), bytes.substr(begin, length)) << text;
        start += text.size() + 1;
    }
}

TEST_F(QBStringBinaryTextsTest, UuencodedLinesThatAreCutOrMalformed) {
    EXPECT_EQ(bytesOf(string("#0V%T\r\n#0V%T\r\n")->uudecode()), "CatCat"); // neither beginning nor end
    EXPECT_EQ(bytesOf(string("#0V%T chk")->uudecode()), "Cat");             // a sum behind the groups
    EXPECT_EQ(bytesOf(string("&0V%T\r\nend")->uudecode()), std::string("Cat\0\0\0", 6)); // blanks cut off
    EXPECT_EQ(bytesOf(string("!~0")->uudecode()), "\xF9");                               // a tilde is 62
    EXPECT_ERROR(
        900006, "3 4",
        EXPECT_EQ(bytesOf(string("begin 644 x\n#0V%T\n#0V\x01T\n#0V%T\nend\n")->uudecode()).substr(0, 3),
                  "Cat"));
}

TEST_F(QBStringBinaryTextsTest, HexadecimalDigitsBothWays) {
    EXPECT_EQ(string("\x01\xAB z")->asHexString()->view(), "01ab207a");
    EXPECT_EQ(bytesOf(string("01aB 207A")->dataFromHexString()), "\x01\xAB z");
    for (const auto &[text, offset] : {std::pair("0g", "1"), {"01 2", "4"}})
        expectError(900007, offset, [text = text] { EXPECT_EQ(string(text)->dataFromHexString(), nullptr); });
}

TEST_F(QBStringURLEscapingTest, RandomTextsAreEscapedAndUnescapedAsTheRulesAreWorded) {
    std::mt19937 random(11);
    const std::string_view pieces[] = {
        "+", "%41", "a", "plain text of some length, ", "%zz", "%E4%f6", "\xE4", "1", "\x7F%", "%%", "%"};
    forEachCpuLevel([&] {
        for (unsigned i = 0; i < 10000 && !HasFailure(); ++i) {
            const std::size_t choice =
                i % 2 ? 7 : std::size(pieces); // without marks that others have as digits
            std::string source;
            for (unsigned count = random() % 60; count > 0; --count)
                source += pieces[random() % choice];
            ASSERT_EQ(string(source)->urlUnEscape()->view(), plain::urlUnescaped(source)) << source;
            ASSERT_EQ(string(source)->urlEscape()->view(), plain::urlEscaped(source)) << source;
        }
    });
}

TEST_F(QBStringURLEscapingTest, WithNothingToReplaceTheReceiverComesBack) {
    NSString *const text = NSMutableString::stringWith("a-b");
    EXPECT_EQ(text->urlEscape(), text);
    EXPECT_EQ(text->urlUnEscape(), text);
}

TEST_F(QBStringURLEscapingTest, PunctuationIsThatOfTheLocale) {
    NEED_LOCALE("de_DE.ISO-8859-1");
    const locale_t latin = ::newlocale(LC_CTYPE_MASK, "de_DE.ISO-8859-1", nullptr);
    const locale_t before = ::uselocale(latin);
    EXPECT_EQ(string("\xA7 \xE4")->urlEscape()->view(), "\xA7%20%>4");
    ::uselocale(before);
    ::freelocale(latin);
}

TEST_F(QBStringURLEscapingTest, LegalCharactersOfNames) {
    for (int character = -300; character < 600; ++character) {
        const bool isByte = character >= 0 && character < 128;
        const bool isName = isByte && (std::isalnum(character) || character == '_');
        EXPECT_EQ(isLegalNameChar(character), isName) << character;
        EXPECT_EQ(isLegalObjNameChar(character), isName || character == '$' || character == '-') << character;
    }
}

TEST_F(QBStringMoneySupportTest, AmountsInCents) {
    const std::pair<const char *, std::int32_t> rows[] = {
        {"12.34", 1234},   {"3", 300}, {"3.5", 35},           {"12.345", 1234}, {"-3.50", -350},
        {"1.234,56", 123}, {"abc", 0}, {"99999999", INT_MAX}, {".5", 5},        {"21474836.47", INT_MAX}};
    for (const auto &[text, cents] : rows)
        EXPECT_EQ(string(text)->intFromMoneyString(), cents) << text;
    EXPECT_EQ(string("1,25")->intNumberFromMoneyString()->intValue(), 125);
}
