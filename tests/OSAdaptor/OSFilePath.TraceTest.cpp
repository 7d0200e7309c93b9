#include "support/ServicesFixture.h"

struct OSFilePathTraceTest : ServicesFixture {
    // With "#" for lines, "DIR" for the directory and "N" for descriptors.
    std::string steps(int level, const std::function<void()> &act) {
        const std::string lines = replaced(traced("fileio", level, act), "src/OSAdaptor/OSFilePath:L", "#");
        return replaced(replaced(lines, directory_.path(), "DIR"), "0x0[0-9a-f]+", "N");
    }
};

TEST_F(OSFilePathTraceTest, StepsAreTracedByLevel) {
    const auto simplify = [] { OSFilePath::stringBySimplifyingPath("a/./b"_ns); };
    EXPECT_EQ(steps(2, simplify), "");
    EXPECT_EQ(steps(6, simplify), "#: enter\n#: simplify path: a/./b\n#: simplified path: a/b\n#: leave\n");
    directory_.write("tree/file", "abc");
    directory_.write("other", "abc");
    const auto compare = [&] { OSFilePath::fileAtPath(path("tree/file"), path("other")); };
    EXPECT_EQ(steps(5, compare), "#: f1: N (DIR/tree/file)\n#: f2: N (DIR/other)\n#: -->NO\n");
    EXPECT_EQ(steps(3, [&] { OSFilePath::removePath(path("tree")); }),
              "#(OSFilePath): +_removePath: -> file 'DIR/tree' exists: 1\n"
              "#(OSFilePath): +_removePath: -> file is directory: 1\n"
              "#(OSFilePath): +_removePath: -> file 'DIR/tree/file' exists: 1\n"
              "#(OSFilePath): +_removePath: -> file is directory: 0\n");
}
