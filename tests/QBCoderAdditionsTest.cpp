#include "support/ServicesFixture.h"

using QBCoderAdditionsTest = ServicesFixture;

// A reader of the archive that `encode` makes.
static Ref<NSUnarchiver> readerOf(const std::function<void(NSCoder *)> &encode) {
    const Ref<NSArchiver> archiver = NSArchiver::init();
    encode(archiver);
    return NSUnarchiver::initForReadingWithData(archiver->archiverData());
}

TEST_F(QBCoderAdditionsTest, SelectorsAndClassesComeBackByTheirNames) {
    const auto reader = readerOf([](NSCoder *coder) {
        coder->encodeSelector("setObject:forKey:"_sel);
        coder->encodeSelector(nullptr);
        coder->encodeClass(QBPath::cls());
        coder->encodeClass(nullptr);
        coder->encodeObject("asks:for:nothing:that:is:there:"_ns);
        coder->encodeObject("NoSuchClass"_ns);
        coder->encodeObject(NSNumber::numberWithInt(5));
        coder->encodeObject(QBPath::qbPathWithString("/a"_ns));
    });
    EXPECT_EQ(reader->decodeSelector(), "setObject:forKey:"_sel);
    EXPECT_EQ(reader->decodeSelector(), nullptr);
    EXPECT_EQ(reader->decodeClass(), QBPath::cls()); // though its objects are not accepted
    EXPECT_EQ(reader->decodeClass(), nullptr);
    EXPECT_STREQ(reader->decodeSelector()->text(), "asks:for:nothing:that:is:there:");
    EXPECT_EQ(reader->decodeClass(), nullptr);
    EXPECT_EQ(reader->decodeSelector(), nullptr);
    expectError(900002, "142 the class 'QBPath' is not among those that are accepted",
                [&] { EXPECT_EQ(reader->decodeClass(), nullptr); });
}

TEST_F(QBCoderAdditionsTest, EachOperationTracesItsWayInAndOutFromLevel12On) {
    activateChannel("misc");
    CapturedOutput output;
    for (debug = 11; debug <= 12; ++debug)
        readerOf([](NSCoder *coder) { coder->encodeClass(NSCoder::cls()); })->decodeClass();
    std::string expected;
    for (const char *operation : {"NSArchiver): -encodeClass:", "NSUnarchiver): -decodeClass"})
        for (const char *message : {" -> enter\n", " -> leave\n"})
            expected += std::string("[T] (P) [] [misc(12) OK] src/QBCoderAdditions:L(") + operation + message;
    EXPECT_EQ(replaced(logLines(output.end()), "Additions:[0-9]+", "Additions:L"), expected);
}
