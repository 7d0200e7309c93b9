#include "support/ServicesFixture.h"

#include <regex>

namespace {

class OSFilePathTraceTest : public ServicesFixture {
protected:
    // Returns what the operation traces, with "#" for lines, "DIR" for the directory and "N" for descriptors.
    std::string traced(int level, auto operation) {
        activateChannel("fileio");
        debug = level;
        CapturedOutput output;
        operation();
        std::string text = logLines(output.end());
        const auto replace = [&](const std::string &pattern, const char *by) {
            text = std::regex_replace(text, std::regex(pattern), by);
        };
        replace("\\[T\\] \\(P\\) \\[\\] \\[fileio\\(" + std::to_string(level) +
                    "\\) OK\\] src/OSAdaptor/OSFilePath:[0-9]+",
                "#");
        replace(directory_.path(), "DIR");
        replace("0x0[0-9a-f]+", "N");
        return text;
    }
};

} // namespace

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
