#include "support/DirectoryFixture.h"

using FileContentsTest = DirectoryFixture;

// The classes that read files and write them.
static const struct {
    std::string name;
    id (*read)(NSString *path);
    BOOL (*write)(NSString *path);
} kClasses[] = {
    {"NSData", [](NSString *path) -> id { return NSData::dataWithContentsOfFile(path); },
     [](NSString *path) { return dataOf("new")->writeToFile(path, /*atomically=*/YES); }},
    {"NSString", [](NSString *path) -> id { return NSString::stringWithContentsOfFile(path); },
     [](NSString *path) { return "new"_ns->writeToFile(path, /*atomically=*/YES); }},
    {"NSArray", [](NSString *path) -> id { return NSArray::arrayWithContentsOfFile(path); },
     [](NSString *path) { return NSArray::array()->writeToFile(path, /*atomically=*/YES); }},
    {"NSDictionary", [](NSString *path) -> id { return NSDictionary::dictionaryWithContentsOfFile(path); },
     [](NSString *path) { return NSDictionary::dictionary()->writeToFile(path, /*atomically=*/YES); }},
};

TEST_F(FileContentsTest, AnyBytesAreWrittenAndReadBack) {
    for (const std::string &bytes :
         {std::string(), std::string("\xC3\xA9\0\xFF\n", 5), std::string(300'000, '\xFF')}) {
        NSString *const data = path("new/data"), *const text = path("new/text");
        EXPECT_TRUE(dataOf(bytes)->writeToFile(data, /*atomically=*/YES));
        EXPECT_TRUE(NSString::stringWith(bytes)->writeToFile(text, /*atomically=*/NO));
        EXPECT_EQ(directory_.read("new/data"), bytes);
        EXPECT_EQ(directory_.read("new/text"), bytes);
        EXPECT_EQ(bytesOf(NSData::dataWithContentsOfFile(text)), bytes);
        EXPECT_EQ(NSString::stringWithContentsOfFile(data)->view(), bytes);
    }
}

TEST_F(FileContentsTest, WhatCannotBeReadIsOneErrorAndNil) {
    directory_.write("file", "{}");
    directory_.write("large", "");
    constexpr off_t kTooLarge = sizeof(void *) == 4 ? INT32_MAX : UINT32_MAX;
    ASSERT_EQ(::truncate((directory_ / "large").c_str(), kTooLarge), 0);
    const std::tuple<std::string, int, const char *> rows[] = {
        {"missing", 100039, ""},
        {"file/x", 100023, " Not a directory"},
        {".", 100023, " Is a directory"},
        {"large", 100023, " File too large"},
        {std::string("m\0p", 3), 100023, " Invalid argument"},
    };
    for (const auto &cls : kClasses) {
        SCOPED_TRACE(cls.name);
        for (const auto &[name, number, text] : rows) {
            NSString *const file = path(name);
            EXPECT_ERROR(number, describe(file) + text, EXPECT_EQ(cls.read(file), nullptr));
        }
        EXPECT_REASON(cls.write(nullptr),
                      (cls.name + " writeToFile:atomically: must have a path that is not nil.").c_str());
        EXPECT_REASON(cls.read(nullptr),
                      (cls.name + " initWithContentsOfFile: must have a path that is not nil.").c_str());
    }
}

TEST_F(FileContentsTest, EarlierErrorsDoNotCountAndStay) {
    ERRORHANDLER->raiseErrorInFile("test", 1, 990001);
    for (const auto &cls : kClasses) {
        directory_.write("read", cls.name == "NSDictionary" ? "{}" : "(a)");
        EXPECT_NE(cls.read(path("read")), nullptr) << cls.name;
        EXPECT_TRUE(cls.write(path("file"))) << cls.name;
    }
    EXPECT_EQ(takenErrors(), "(990001)");
}

TEST_F(FileContentsTest, FailuresAreAnsweredWithoutAnErrorHandlerToo) {
    QBErrorHandler *const handler = std::exchange(ERRORHANDLER, nullptr);
    for (const auto &cls : kClasses)
        EXPECT_FALSE(cls.write("/dev/null/file"_ns)) << cls.name;
    directory_.makeDirectory("tmp/tree");
    directory_.write("tmp/tree/other", "");
    directory_.makeDirectory("tree");
    OSFilePath::removePath(path("tree"), path("tmp")); // can't be moved there
    EXPECT_EQ(directory_.read("tmp/tree/other"), "");
    EXPECT_EQ(std::exchange(ERRORHANDLER, handler), nullptr);
}
