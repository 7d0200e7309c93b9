#include "support/Faults.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <sys/stat.h>

class OSFilePathComparisonTest : public PoolFixture {
protected:
    bool differ(std::string_view one, std::string_view other) {
        return send<BOOL>(OSFilePath::cls(), "fileAtPath:differsFromFileAtPath:"_sel, directory_.string(one),
                          directory_.string(other));
    }

    TemporaryDirectory directory_;
};

TEST_F(OSFilePathComparisonTest, OnlyFilesOfTheSameBytesAreAlike) {
    const std::string block(131072, 'a');
    directory_.write("empty", "");
    directory_.write("empty too", "");
    directory_.write("long", block + block + "tail");
    directory_.write("long too", block + block + "tail");
    directory_.write("tail", block + block + "tAil");
    directory_.write("first", "b" + block.substr(1) + block + "tail");
    directory_.write("shorter", block + block + "tai");
    directory_.makeDirectory("directory");
    ASSERT_EQ(::mkfifo((directory_ / "pipe").c_str(), 0600), 0); // nobody writes into it
    EXPECT_FALSE(differ("empty", "empty too"));
    EXPECT_FALSE(differ("long", "long too"));
    EXPECT_FALSE(differ("pipe", "empty"));
    for (const char *other : {"tail", "first", "shorter", "empty", "missing", "directory"}) {
        EXPECT_TRUE(differ("long", other)) << other;
        EXPECT_TRUE(differ(other, "long")) << other;
    }
    EXPECT_TRUE(differ("missing", "missing"));
    EXPECT_TRUE(differ("directory", "directory"));
    const Fault pieces(Call::read, /*skip=*/0, /*times=*/0, sys::ShortTransfer{1000});
    EXPECT_FALSE(differ("long", "long too"));
    EXPECT_TRUE(differ("long", "tail"));
}

TEST_F(OSFilePathComparisonTest, FailuresAreRaisedAndAnsweredWithNo) {
    directory_.write("one", "abc");
    directory_.write("two", "xyz");
    const struct {
        Call call;
        unsigned skip;
        int number;
        const char *path;
    } rows[] = {{Call::stat, 0, 100194, "one"}, {Call::stat, 1, 100194, "two"},
                {Call::open, 0, 100023, "one"}, {Call::open, 1, 100023, "two"},
                {Call::read, 0, 100023, "one"}, {Call::read, 1, 100023, "two"}};
    for (const auto &row : rows) {
        const Fault fault(row.call, row.skip, /*times=*/1, EACCES);
        expectError(row.number, directory_ / row.path + " Permission denied",
                    [&] { EXPECT_FALSE(differ("one", "two")); });
    }
    ErrorExpectation error(100156);
    NSString *const one = directory_.string("one"), *const two = directory_.string("two");
    const Fault fault(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
    EXPECT_FALSE(OSFilePath::fileAtPath(one, two));
}
