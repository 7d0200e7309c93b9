#include "support/CapturedOutput.h"
#include "support/EchoingTarget.h"
#include "support/PoolFixture.h"

using QBBase64OutputFilterTest = PoolFixture;
using QBMD5OutputStreamTest = PoolFixture;
using QBValidCharFilterTest = PoolFixture;

static std::string encoded(const Strings &pieces) {
    QBStringOutputStream *const target = QBStringOutputStream::stream();
    QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(target);
    for (const std::string &piece : pieces)
        write(filter, piece);
    filter->close();
    return std::string(target->targetString()->view());
}

static std::string decoded(const Strings &pieces) {
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(target, /*decode=*/NO);
    for (const std::string &piece : pieces)
        write(filter, piece);
    filter->flush();
    return bytesOf(target->targetData());
}

TEST_F(QBBase64OutputFilterTest, PiecesAreJoinedAndTheLastGroupIsFilledUp) {
    EXPECT_EQ(encoded({"M"}), "TQ==");
    EXPECT_EQ(encoded({"M", "an is", " d", "istinguished"}), "TWFuIGlzIGRpc3Rpbmd1aXNoZWQ=");
    const std::string line = encoded({std::string(3000, '\xFF')});
    EXPECT_EQ(line, std::string(4000, '/'));
    EXPECT_EQ(decoded({"TW", " F\n", "u", "TWE", "="}), "ManMa");
    EXPECT_EQ(decoded({line.substr(0, 1001) + "\r\n" + line.substr(1001)}), std::string(3000, '\xFF'));
}

TEST_F(QBBase64OutputFilterTest, ATargetThatTellsWritesApartSeesEachGroup) {
    QBArrayOutputStream *const target = QBArrayOutputStream::stream();
    QBBase64OutputFilter *const encoder = QBBase64OutputFilter::streamWithTarget(target);
    write(encoder, "Many hands");
    encoder->flush();
    write(QBBase64OutputFilter::streamWithTarget(target, /*decode=*/YES), "TWFueSBoYW5kcw==");
    EXPECT_EQ(writesOf(target), (Strings{"TWFu", "eSBo", "YW5k", "cw==", "Man", "y h", "and", "s"}));
}

TEST_F(QBBase64OutputFilterTest, TheTargetGrowsAsByTheWritesOfTheGroups) {
    for (const auto &[capacity, length, grown] :
         {std::tuple(10u, 3000, 5120u), {40'000u, 90'000, 138'304u}}) {
        const auto target = QBDataOutputStream::initWithCapacity(capacity);
        write(QBBase64OutputFilter::streamWithTarget(target), std::string(length, 'a'));
        EXPECT_EQ(target->bufLength(), grown);
    }
}

// A result that was handed out does not change, and what is written later is in the next one.
TEST_F(QBBase64OutputFilterTest, ResultsOfTheTargetAreNotWrittenOver) {
    QBStringOutputStream *const target = QBStringOutputStream::stream();
    QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(target);
    write(filter, "Man");
    NSString *const first = target->targetString();
    write(filter, "ManMan");
    EXPECT_EQ(first->view(), "TWFu");
    EXPECT_EQ(target->targetString()->view(), "TWFuTWFuTWFu");
    NSString *const own = inOwnPool([&] { return target->targetString(); });
    filter->writeObject(own); // which the first group takes from its only owner
    EXPECT_EQ(target->targetString()->view(), "TWFuTWFuTWFuVFdGdVRXRnVUV0Z1");
}

TEST_F(QBBase64OutputFilterTest, WhatItsTargetWritesToTheFilterGoesBehindTheGroup) {
    for (const auto &[echoed, whole] : {std::pair("e", "ManeX"), {"(e)", "Man(e)X"}, {"ee", "ManeeX"}}) {
        const Ref<EchoingTarget> target = Ref<EchoingTarget>::adopt(new EchoingTarget);
        QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(target.get());
        target->echo = filter;
        target->echoed = echoed;
        write(filter, "ManX");
        filter->flush();
        EXPECT_EQ(decoded({target->bytes}), whole);
    }
}

TEST_F(QBBase64OutputFilterTest, MalformedGroupsEndTheWriteWithTheirLine) {
    const std::tuple<const char *, const char *, const char *> rows[] = {
        {"TWFuTWF!TWFu", "Man", "src/QBBase64OutputFilter:150"},
        {"T===", "", "src/QBBase64OutputFilter:150"},
        {"TW=uTWFu", "", "src/QBBase64OutputFilter:146"},
        {"TWFuTWF", "Man", "src/QBBase64OutputFilter:212"}};
    for (const auto &[text, result, place] : rows)
        expectErrorAt(place, 50052, "",
                      [text = text, result = result] { EXPECT_EQ(decoded({text}), result); });
}

TEST_F(QBBase64OutputFilterTest, AWriteBehindAMalformedOneStartsAnew) {
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    QBBase64OutputFilter *const filter = QBBase64OutputFilter::streamWithTarget(target, /*decode=*/YES);
    ERRORHANDLER->raiseErrorInFile("caller", 1, 100024, "f", "text");
    write(filter, "TW!=");
    EXPECT_EQ(takenErrors(), "(100024, 50052)"); // behind the caller's
    write(filter, "TWFu");
    EXPECT_EQ(bytesOf(target->targetData()), "Man");
}

static std::string md5(const Strings &pieces) {
    QBMD5OutputStream *const stream = QBMD5OutputStream::stream();
    for (const std::string &piece : pieces)
        write(stream, piece);
    return std::string(stream->md5Hash()->view());
}

TEST_F(QBMD5OutputStreamTest, DigestsAreThoseOfTheRfcHoweverTheBytesCome) {
    const std::string digits =
        "12345678901234567890123456789012345678901234567890123456789012345678901234567890";
    for (std::size_t cut = 1; cut < digits.size(); ++cut)
        EXPECT_EQ(md5({digits.substr(0, cut), digits.substr(cut)}), "57edf4a22be3c955ac49da2e2107b67a")
            << cut;
    EXPECT_EQ(md5({std::string(55, 'a')}), "ef1772b6dff9a122358552954ad0df65"); // the most for one block
}

TEST_F(QBMD5OutputStreamTest, ADigestStartsANewOneAndTheFunctionMakesOneOfItsOwnMemory) {
    QBMD5OutputStream *const stream = QBMD5OutputStream::stream();
    stream->writeByte('a');
    EXPECT_EQ(stream->md5Hash()->view(), "0cc175b9c0f1b6a831c399e269772661");
    stream->writeByte('b');
    stream->reset();
    EXPECT_EQ(stream->md5HashData()->asHexString()->view(), "d41d8cd98f00b204e9800998ecf8427e");
    unsigned length = 1;
    unsigned char *const digest = md5Hash(reinterpret_cast<const unsigned char *>("a"), &length);
    EXPECT_EQ(length, 16u);
    EXPECT_EQ(digest[15], 0x61);
    std::free(digest);
}

TEST_F(QBValidCharFilterTest, InvalidBytesAreRemovedAndLoggedWithTheirPlace) {
    QBArrayOutputStream *const target = QBArrayOutputStream::stream();
    QBValidCharFilter *const filter = QBValidCharFilter::streamWithTarget(target);
    CapturedOutput log(2);
    write(filter, "all\t\r\n\x7F\xE9 valid");
    EXPECT_EQ(log.text(), "");
    write(filter, {"a\x01z\0\x1F\v\f", 7});
    filter->writeByte('\xE9');
    filter->writeByte('c');
    EXPECT_EQ(writesOf(target), (Strings{"all\t\r\n\x7F\xE9 valid", "az", "c"}));
    const std::string lines = log.text();
    for (const char *line : {"pos 1: 0x01\n", "pos 3: 0x00\n", "pos 4: 0x1f\n", "char: 0xffffffe9\n"})
        EXPECT_NE(lines.find(line), std::string::npos) << line << " in " << lines;
}
