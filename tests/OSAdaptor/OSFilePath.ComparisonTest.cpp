#include "support/DirectoryFixture.h"

struct OSFilePathComparisonTest : DirectoryFixture {
    bool differ(std::string_view one, std::string_view other) {
        return OSFilePath::fileAtPath(path(one), path(other));
    }
};

TEST_F(OSFilePathComparisonTest, OnlyFilesOfTheSameBytesAreAlike) {
    const std::string block(131072, 'a');
    directory_.write("empty", "");
    directory_.write("empty too", "");
    directory_.write("long", block + block + "tail");
    directory_.write("long too", block + block + "tail");
    directory_.write("tail", block + block + "tAil");
    directory_.write("shorter", block + block + "tai");
    directory_.makeDirectory("directory");
    ASSERT_EQ(::mkfifo((directory_ / "pipe").c_str(), 0600), 0); // nobody writes into it
    EXPECT_FALSE(differ("empty", "empty too"));
    EXPECT_FALSE(differ("long", "long too"));
    EXPECT_FALSE(differ("pipe", "empty"));
    for (const char *other : {"tail", "shorter", "missing", "directory"})
        EXPECT_TRUE(differ("long", other)) << other;
    EXPECT_TRUE(differ("missing", "missing"));
    EXPECT_TRUE(differ("directory", "directory"));
    EXPECT_ERROR(100194, directory_ / "tail/x Not a directory", EXPECT_FALSE(differ("long", "tail/x")));
    {
        const Fault locked(Call::open, /*skip=*/1, /*times=*/1, EACCES);
        EXPECT_ERROR(100023, directory_ / "long too Permission denied",
                     EXPECT_FALSE(differ("long", "long too")));
    }
    const Fault second(Call::read, /*skip=*/1, /*times=*/1, EIO); // is raised and answered with no
    EXPECT_ERROR(100023, directory_ / "tail Input/output error", EXPECT_FALSE(differ("long", "tail")));
    const Fault pieces(Call::read, /*skip=*/0, /*times=*/0, sys::ShortTransfer{1000});
    EXPECT_FALSE(differ("long", "long too"));
    EXPECT_TRUE(differ("long", "tail"));
}
