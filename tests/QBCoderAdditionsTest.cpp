#include "support/ServicesFixture.h"

#include <functional>
#include <regex>

using QBCoderAdditionsTest = ServicesFixture;

namespace {

// A reader of the archive that `encode` makes.
template <class Archiver, class Unarchiver>
Ref<Unarchiver> readerOf(const std::function<void(NSCoder *)> &encode) {
    const Ref<Archiver> archiver = Archiver::init();
    encode(archiver);
    return Unarchiver::initForReadingWithData(archiver->archiverData());
}

template <class Archiver, class Unarchiver>
void expectNamesToComeBack() {
    const auto reader = readerOf<Archiver, Unarchiver>([](NSCoder *coder) {
        coder->encodeSelector("setObject:forKey:"_sel);
        coder->encodeSelector(nullptr);
        coder->encodeClass(QBPath::cls());
        coder->encodeClass(nullptr);
        coder->encodeObject("asks:for:nothing:that:is:there:"_ns);
        coder->encodeObject("NoSuchClass"_ns);
    });
    EXPECT_EQ(reader->decodeSelector(), "setObject:forKey:"_sel);
    EXPECT_EQ(reader->decodeSelector(), nullptr);
    EXPECT_EQ(reader->decodeClass(), QBPath::cls()); // though its objects are not accepted
    EXPECT_EQ(reader->decodeClass(), nullptr);
    EXPECT_STREQ(reader->decodeSelector()->text(), "asks:for:nothing:that:is:there:");
    EXPECT_EQ(reader->decodeClass(), nullptr);
    EXPECT_TRUE(reader->isAtEnd());
}

} // namespace

TEST_F(QBCoderAdditionsTest, SelectorsAndClassesComeBackByTheirNames) {
    expectNamesToComeBack<NSArchiver, NSUnarchiver>();
    expectNamesToComeBack<NSKeyedArchiver, NSKeyedUnarchiver>();
}

TEST_F(QBCoderAdditionsTest, WhatIsNoNameIsNone) {
    const auto reader = readerOf<NSArchiver, NSUnarchiver>([](NSCoder *coder) {
        coder->encodeObject(NSNumber::numberWithInt(5));
        coder->encodeObject(QBPath::qbPathWithString("/a"_ns));
        coder->encodeClass(QBPath::cls());
    });
    EXPECT_EQ(reader->decodeSelector(), nullptr);
    const ErrorExpectation error(900002); // an object of a class that is not accepted
    EXPECT_EQ(reader->decodeClass(), nullptr);
}

TEST_F(QBCoderAdditionsTest, EachOperationTracesItsWayInAndOutFromLevel12On) {
    activateChannel("misc");
    CapturedOutput output;
    for (debug = 11; debug <= 12; ++debug) {
        const auto reader =
            readerOf<NSArchiver, NSUnarchiver>([](NSCoder *coder) { coder->encodeClass(NSCoder::cls()); });
        reader->decodeClass();
    }
    std::string expected;
    for (const char *operation : {"NSArchiver): -encodeClass:", "NSUnarchiver): -decodeClass"})
        for (const char *message : {" -> enter\n", " -> leave\n"})
            expected += std::string("[T] (P) [] [misc(12) OK] src/QBCoderAdditions:L(") + operation + message;
    EXPECT_EQ(std::regex_replace(logLines(output.end()), std::regex("Additions:[0-9]+"), "Additions:L"),
              expected);
}
