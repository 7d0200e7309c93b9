#include "OSAdaptor/OSFilePath.Support.h"
#include "support/PoolFixture.h"

using OSFilePathTextTest = PoolFixture;

static std::string simplified(std::string_view path) {
    return describe(OSFilePath::stringBySimplifyingPath(NSString::stringWith(path)));
}

static std::string takeText(char *text) {
    const std::string copy = text ? text : "nil";
    std::free(text);
    return copy;
}

// Others are compared with a plain model in fuzz/Paths.cpp.
TEST_F(OSFilePathTextTest, SimplificationKeepsTheEndThatMeansNothing) {
    const char *const rows[][2] = {
        {"", ""},          {"/..", "/.."},        {"a/..", "."},     {"./a", "a"},
        {"a/./", "a/./"},  {"a//", "a//"},        {"a/b/..", "a/"},  {"a/b/../", "a//"},
        {"/a/..//.", "/"}, {"../a/../b", "../b"}, {"//srv", "//srv"}};
    for (const auto &[path, result] : rows)
        EXPECT_EQ(simplified(path), result) << path;
    EXPECT_EQ(simplified(std::string_view("a/\0/../\xff", 8)), "a/\xff");
}

TEST_F(OSFilePathTextTest, RelativePathsLeadFromTheDirectoryToThePath) {
    const char *const rows[][3] = {
        {"/a/b/c", "/a/d", "../b/c"}, {"/a/b", "/a/b", ""}, {"/a/b", "/a/b/c/d", "../../"},
        {"/a/bc", "/a/b", "../bc"},   {"/x", "/", "x"},     {"/", "/a", "../"},
    };
    for (const auto &[path, directory, result] : rows)
        EXPECT_EQ(takeText(_pathRelativeToDir(path, directory)), result) << path << " " << directory;
}

TEST_F(OSFilePathTextTest, CFunctionsSplitAtTheLastSeparator) {
    const char *const rows[][3] = {{"/a/b", "b", "/a"}, {"a", "a", ""},    {"/a", "a", ""},
                                   {"a/b/", "", "a/b"}, {"//a", "a", "/"}, {"", "", ""}};
    for (const auto &[path, base, directory] : rows) {
        EXPECT_STREQ(_basename(path), base);
        EXPECT_EQ(takeText(_dirname(path)), directory) << path;
    }
    EXPECT_EQ(qb::files::directoryOf("/a"), "/"); // unlike _dirname
    EXPECT_EQ(_basename(nullptr), nullptr);
    EXPECT_EQ(_dirname(nullptr), nullptr);
    EXPECT_EQ(_pathRelativeToDir(nullptr, "/"), nullptr);
    EXPECT_TRUE(_isPathSubpathOfPath("/a/bc", "/a/b"));
    EXPECT_FALSE(_isPathSubpathOfPath("/a", "/a/b"));
    EXPECT_FALSE(_isPathSubpathOfPath("/a", nullptr));
}

TEST_F(OSFilePathTextTest, OtherTextOperationsTakeThePathAsItIs) {
    EXPECT_FALSE(OSFilePath::isPathSeparator('\\'));
    EXPECT_FALSE(OSFilePath::isAbsolutePath(""_ns));
    EXPECT_TRUE(OSFilePath::isAbsolutePath("/a"_ns));
    EXPECT_EQ(describe(OSFilePath::shortPathForPath("/a/./b"_ns)), "/a/./b");
    EXPECT_EQ(describe(OSFilePath::completeExecutable("/a/./b"_ns)), "/a/./b");
    EXPECT_EQ(describe(OSFilePath::stringByStandardizingPath("/a/./b"_ns)), "/a/./b");
    EXPECT_EQ(describe(OSFilePath::stringByNormalizingPath("/a/./b"_ns)), "/a/./b");
    EXPECT_EQ(describe(OSFilePath::stringByNormalizingAndSimplifyingPath("/a/./b"_ns)), "/a/b");
    EXPECT_EQ(describe(OSFilePath::pathSeparatorString()), "/");
    const char *const rows[][3] = {{"a/b/c", "a", "b/c"}, {"a", "a", ""}, {"/a", "", "a"}};
    for (const auto &[path, first, rest] : rows) {
        NSString *const text = NSString::stringWithCString(path);
        EXPECT_EQ(describe(OSFilePath::firstPathComponentOf(text)), first) << path;
        EXPECT_EQ(describe(OSFilePath::stringByDeletingFirstPathComponentOf(text)), rest) << path;
    }
}

TEST_F(OSFilePathTextTest, UniqueNamesDiffer) {
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i)
        names.insert(describe(OSFilePath::uniqueTmpFilename()));
    EXPECT_EQ(names.size(), 100u);
    EXPECT_EQ(names.begin()->rfind(describe(OSFilePath::tmpDir()) + "/"), 0u);
    EXPECT_EQ(names.begin()->rfind("/var/tmp/"), 0u);
    EXPECT_EQ(describe(OSFilePath::uniqueFilenameWithPrefix("p_"_ns, "d"_ns)).rfind("d/p_", 0), 0u);
    EXPECT_EQ(describe(OSFilePath::uniqueFilenameWithPrefix("p_"_ns, ""_ns)).rfind("p_", 0), 0u);
}
