#include "support/ServicesFixture.h"
#include "support/TemporaryDirectory.h"

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

    TemporaryDirectory directory_;
};

} // namespace

TEST_F(OSFilePathTraceTest, SimplificationIsTracedByLevel) {
    const auto simplify = [] { OSFilePath::stringBySimplifyingPath("a/./b"_ns); };
    EXPECT_EQ(traced(2, simplify), "");
    EXPECT_EQ(traced(3, simplify), "#: enter\n#: leave\n");
    EXPECT_EQ(traced(6, simplify), "#: enter\n#: simplify path: a/./b\n#: simplified path: a/b\n#: leave\n");
}

TEST_F(OSFilePathTraceTest, EachCopyOfATreeIsTraced) {
    directory_.write("tree/file", "abc");
    const std::string text =
        traced(6, [&] { OSFilePath::copyPath(directory_.string("tree"), directory_.string("new")); });
    EXPECT_NE(text.find("#: sourcePath: DIR/tree, targetPath: DIR/new\n"), std::string::npos) << text;
    EXPECT_NE(text.find("#: sourcePath: DIR/tree/file, targetPath: DIR/new/tree\n"), std::string::npos);
    EXPECT_EQ(directory_.read("new/tree/file"), "abc");
}

TEST_F(OSFilePathTraceTest, RemovalAndComparisonAreTraced) {
    directory_.write("tree/file", "abc");
    directory_.write("other", "abc");
    EXPECT_EQ(traced(5,
                     [&] {
                         OSFilePath::fileAtPath(directory_.string("tree/file"), directory_.string("other"));
                         OSFilePath::fileAtPath(directory_.string("missing"), directory_.string("other"));
                     }),
              "#: f1: N (DIR/tree/file)\n#: f2: N (DIR/other)\n#: -->NO\n#: -->YES\n");
    EXPECT_EQ(traced(3, [&] { OSFilePath::removePath(directory_.string("tree")); }),
              "#(OSFilePath): +_removePath: -> file 'DIR/tree' exists: 1\n"
              "#(OSFilePath): +_removePath: -> file is directory: 1\n"
              "#(OSFilePath): +_removePath: -> file 'DIR/tree/file' exists: 1\n"
              "#(OSFilePath): +_removePath: -> file is directory: 0\n");
}
