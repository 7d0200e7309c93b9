#include "support/ServicesFixture.h"

struct OSFilePathTraceTest : ServicesFixture {
    // Returns what the operation traces, with "#" for lines, "DIR" for the directory and "N" for descriptors.
    std::string traced(int level, auto operation) {
        activateChannel("fileio");
        debug = level;
        CapturedOutput output;
        operation();
        const std::string start = R"(\[T\] \(P\) \[\] \[fileio\()" + std::to_string(level) +
                                  R"(\) OK\] src/OSAdaptor/OSFilePath:[0-9]+)";
        const std::string text = replaced(logLines(output.end()), start, "#");
        return replaced(replaced(text, directory_.path(), "DIR"), "0x0[0-9a-f]+", "N");
    }
};

TEST_F(OSFilePathTraceTest, StepsAreTracedByLevel) {
    const auto simplify = [] { OSFilePath::stringBySimplifyingPath("a/./b"_ns); };
    EXPECT_EQ(traced(2, simplify), "");
    EXPECT_EQ(traced(6, simplify), "#: enter\n#: simplify path: a/./b\n#: simplified path: a/b\n#: leave\n");
    directory_.write("tree/file", "abc");
    directory_.write("other", "abc");
    const auto compare = [&] { OSFilePath::fileAtPath(path("tree/file"), path("other")); };
    EXPECT_EQ(traced(5, compare), "#: f1: N (DIR/tree/file)\n#: f2: N (DIR/other)\n#: -->NO\n");
    EXPECT_EQ(traced(3, [&] { OSFilePath::removePath(path("tree")); }),
              "#(OSFilePath): +_removePath: -> file 'DIR/tree' exists: 1\n"
              "#(OSFilePath): +_removePath: -> file is directory: 1\n"
              "#(OSFilePath): +_removePath: -> file 'DIR/tree/file' exists: 1\n"
              "#(OSFilePath): +_removePath: -> file is directory: 0\n");
}
