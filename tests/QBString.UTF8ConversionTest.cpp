#include "support/CapturedOutput.h"
#include "support/PoolFixture.h"

using QBStringUTF8ConversionTest = PoolFixture;
using namespace std::string_view_literals;

constexpr const char *kPlace = "src/QBStringAdditions:1353";

TEST_F(QBStringUTF8ConversionTest, IndexOfCharacterStopsAtTheEndAndAtTheFirstError) {
    const char *const text = "a\xC3\xA9\xE2\x82\xACz";
    const std::pair<int, int> rows[] = {{-1, 0}, {0, 0}, {2, 3}, {3, 6}, {INT32_MAX, 7}};
    for (const auto &[count, offset] : rows)
        EXPECT_EQ(NSString::_indexOfUtf8Index(count, text), offset) << count;
    EXPECT_EQ(NSString::_indexOfUtf8Index(2, "\xC3\xA9z\xFF"), 3); // the error lies behind it
    EXPECT_ERROR_AT(kPlace, 100231, "3", EXPECT_EQ(NSString::_indexOfUtf8Index(3, "\xC3\xA9z\xFF"), 3));
}

TEST_F(QBStringUTF8ConversionTest, CharactersAreCountedUpToTheFirstError) {
    EXPECT_EQ(string("a\xC3\xA9\xF0\x9F\x98\x80\0z"sv)->utf8CharCount(), 5);
    const char *const bad = "ab\xFF";
    EXPECT_ERROR_AT(kPlace, 100231, "2", _raiseUtf8ErrorInString(bad, bad + 2));
    EXPECT_ERROR(100231, "3", EXPECT_EQ(string("a\xC3\xA9\xC3")->utf8CharCount(), 2));
    EXPECT_ERROR_AT(kPlace, 100231, "2", send<void>(string("\xC3\xA9\xC3\xC3"), "verifyUTF8"_sel));
    const std::string text = "0123456789\xFF";
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(&text.back()) - ((1ULL << 32) + 5);
    if (sizeof start == 8)
        EXPECT_ERROR(100231, "4294967295",
                     _raiseUtf8ErrorInString(reinterpret_cast<const char *>(start), &text.back()));
}

TEST_F(QBStringUTF8ConversionTest, SubstringsCountCharacters) {
    NSString *const text = string("a\xC3\xA9\xF0\x9F\x98\x80z\xFF");
    EXPECT_EQ(describe(text->utf8SubstringFromIndex(1, 2)), "\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(describe(text->utf8SubstringFromIndex(-5, 2)), "a\xC3\xA9");
    EXPECT_EQ(describe(text->utf8SubstringFromIndex(0, -1)), "");
    NSString *const two = string("\xC3\xA9z");
    EXPECT_EQ(describe(two->utf8SubstringFromIndex(1, 100)), "z");
    EXPECT_EQ(two->utf8SubstringFromIndex(0, 2), two);
}

TEST_F(QBStringUTF8ConversionTest, SubstringOfMalformedTextIsEmptyAndItsErrorStandsBehindEarlierOnes) {
    NSString *const text = string("a\xC3\xA9\xFFz");
    ERRORHANDLER->raiseErrorInFile("test", 1, 990001);
    EXPECT_EQ(describe(text->utf8SubstringFromIndex(0, 2)), "a\xC3\xA9"); // an earlier error does not count
    for (const int index : {0, 4}) // the error lies in what is taken, and in front of it
        EXPECT_EQ(describe(text->utf8SubstringFromIndex(index, 3)), "");
    EXPECT_EQ(takenErrors(), "(990001, 100231, 100231)");
}

TEST_F(QBStringUTF8ConversionTest, FirstCorruptAndFirstCorrectPositionLeaveNoTrace) {
    EXPECT_EQ(string("a\xA9\xC3\xA9")->indexOfFirstCorruptUtf8Character(), 1);
    EXPECT_EQ(string("\xC0\x80\xED\xA0\x80")->indexOfFirstCorruptUtf8Character(), -1);
    unsigned codePoint = 0;
    const auto unended = std::make_unique<unsigned char[]>(2); // nothing behind the character is looked at
    std::memcpy(unended.get(), "\xC3\xA9", 2);
    EXPECT_EQ(_getUtf8CharacterByteLength(unended.get(), &codePoint), 2);
    EXPECT_EQ(codePoint, 0xE9u);
    EXPECT_EQ(string("\xE2\x82z")->indexOfFirstCorrectUtf8Character(), 2);
    EXPECT_EQ(ERRORHANDLER->errorState(), ERRORSTATE_OK);
}

TEST_F(QBStringUTF8ConversionTest, EachCharacterInAForbiddenRangeIsAnError) {
    const NSRange ranges[] = {{'b', 2}, {0x20AC, 0}, {0xFFFFFF00, 0xFFFFFFFF}};
    string("ae\xC3\xA9")->verifyUTF8WithInvalidRanges(ranges, 3);
    string("b")->verifyUTF8WithInvalidRanges(nullptr, 3);
    EXPECT_TRUE(recordingErrorHandler()->raised.empty());
    string("bcde\xE2\x82\xAC")->verifyUTF8WithInvalidRanges(ranges, 3);
    EXPECT_EQ(takenErrors(), "(100242, 100242, 100242, 100242)");
    EXPECT_ERROR_AT("src/QBStringAdditions:1539", 100242, "8364",
                    NSString::verifyUTF8("\xE2\x82\xAC", ranges, 3));
    send<void>(NSString::cls(), "verifyUTF8:withInvalidRanges::"_sel, "d\xFFz", ranges, 3u);
    EXPECT_EQ(takenErrors(), "(100231, 100242)"); // the walk ends at the malformed byte
}

TEST_F(QBStringUTF8ConversionTest, CodePointsAreWrittenInOneWrite) {
    QBArrayOutputStream *const stream = QBArrayOutputStream::stream();
    for (const std::int32_t codePoint : {-1, 0, 0x80, 0x20AC, INT32_MAX, INT32_MIN})
        NSString::writeUtf8CharForUnicodePos(codePoint, stream);
    EXPECT_EQ(describe(stream->targetArray()), "(<00>, <c280>, <e282ac>, <fdbfbfbf bfbf>)");
}

TEST_F(QBStringUTF8ConversionTest, DebugLevelShowsTheBytesAroundTheError) {
    const std::pair<const char *, const char *> rows[] = {
        {"0123456789abcdef\xFFghijklmnop", "6789abcdef\xFFghijklmno\n          ^\n"}, {"\xFF", "\xFF\n^\n"}};
    debug = 1;
    for (const auto &[text, shown] : rows) {
        const ErrorExpectation error(100231);
        CapturedOutput output;
        string(text)->verifyUTF8();
        EXPECT_EQ(output.end(), "Error in UTF-8 string:\n" + std::string(shown));
    }
    debug = 0;
}
