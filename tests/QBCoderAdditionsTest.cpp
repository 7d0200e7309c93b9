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
        coder->encodeObject(number(5));
        coder->encodeObject(QBPath::qbPathWithString("/a"_ns));
    });
    EXPECT_EQ(reader->decodeSelector(), "setObject:forKey:"_sel);
    EXPECT_EQ(reader->decodeSelector(), nullptr);
    EXPECT_EQ(reader->decodeClass(), QBPath::cls()); // though its objects are not accepted
    EXPECT_EQ(reader->decodeClass(), nullptr);
    EXPECT_STREQ(reader->decodeSelector()->text(), "asks:for:nothing:that:is:there:");
    EXPECT_EQ(reader->decodeClass(), nullptr);
    EXPECT_EQ(reader->decodeSelector(), nullptr);
    EXPECT_ERROR(900002, "142 the class 'QBPath' is not among those that are accepted",
                 EXPECT_EQ(reader->decodeClass(), nullptr));
}

TEST_F(QBCoderAdditionsTest, EachOperationTracesItsWayInAndOutFromLevel12On) {
    const auto act = [] {
        readerOf([](NSCoder *coder) { coder->encodeClass(NSCoder::cls()); })->decodeClass();
    };
    EXPECT_EQ(traced("misc", /*level=*/11, act), "");
    EXPECT_EQ(traced("misc", /*level=*/12, act),
              "src/QBCoderAdditions:L(NSArchiver): -encodeClass: -> enter\n"
              "src/QBCoderAdditions:L(NSArchiver): -encodeClass: -> leave\n"
              "src/QBCoderAdditions:L(NSUnarchiver): -decodeClass -> enter\n"
              "src/QBCoderAdditions:L(NSUnarchiver): -decodeClass -> leave\n");
}
