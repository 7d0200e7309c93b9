#include "System/Process.h"
#include "support/PoolFixture.h"

/// Sets HOME, and puts the old one back.
struct NSStringPathTest : PoolFixture {
    NSStringPathTest() { ::setenv("HOME", "/h/me", 1); }
    ~NSStringPathTest() override { ::setenv("HOME", old_.c_str(), 1); }

    const std::string old_ = std::getenv("HOME") ? std::getenv("HOME") : "";
};

TEST_F(NSStringPathTest, ComponentsAndExtensions) {
    const char *const rows[][7] = {
        {"/a/b.html", "(/, a, b.html)", "b.html", "/a", "html", "/a/b", "/a/b.html.tiff"},
        {"a.d//b/", "(a.d, b, /)", "b", "a.d", "", "a.d//b", "a.d//b.tiff"},
        {"", "()", "", "", "", "", ""},
        {"/", "(/)", "/", "/", "", "/", "/"},
        {".profile", "(.profile)", ".profile", "", "", ".profile", ".profile.tiff"},
        {"a..b", "(a..b)", "a..b", "", "b", "a.", "a..b.tiff"},
        {"é/ü.ß/", "(é, ü.ß, /)", "ü.ß", "é", "ß", "é/ü", "é/ü.ß.tiff"},
    };
    for (const auto &[text, components, last, parent, extension, withoutExtension, withTiff] : rows) {
        SCOPED_TRACE(text);
        NSString *const path = NSString::stringWith(text);
        EXPECT_EQ(describe(path->pathComponents()), components);
        EXPECT_EQ(path->lastPathComponent()->view(), last);
        EXPECT_EQ(path->stringByDeletingLastPathComponent()->view(), parent);
        EXPECT_EQ(path->pathExtension()->view(), extension);
        EXPECT_EQ(path->stringByDeletingPathExtension()->view(), withoutExtension);
        EXPECT_EQ(path->stringByAppendingPathExtension("tiff"_ns)->view(), withTiff);
        EXPECT_EQ(path->isAbsolutePath(), text[0] == '/');
    }
}

TEST_F(NSStringPathTest, ComponentsAreJoinedWithOneSlash) {
    static const char *const kRows[][3] = {
        {"/a", "b", "/a/b"}, {"/a/", "b/", "/a/b"}, {"/", "b", "/b"}, {"", "b", "b"},
        {"", "/b/", "/b"},   {"a", "/b", "a/b"},    {"a", "", "a"},   {"a//", "//", "a"},
    };
    for (const auto &row : kRows)
        EXPECT_EQ(describe(string(row[0])->stringByAppendingPathComponent(string(row[1]))), row[2])
            << row[0] << " + " << row[1];
    NSArray *const components = NSArray::arrayWith({"/"_ns, "a"_ns, ""_ns, "b/"_ns, "/"_ns});
    EXPECT_EQ(NSString::pathWithComponents(components)->view(), "/a/b");
}

TEST_F(NSStringPathTest, HomeDirectoriesAndStandardForm) {
    const std::string root = qb::sys::homeDirectory("root");
    ASSERT_FALSE(root.empty());
    const SEL expand = "stringByExpandingTildeInPath"_sel, standardize = "stringByStandardizingPath"_sel;
    const SEL abbreviate = "stringByAbbreviatingWithTildeInPath"_sel;
    const std::tuple<SEL, const char *, std::string> rows[] = {
        {expand, "~/a", "/h/me/a"},
        {expand, "~root/x", root + "/x"},
        {expand, "~no such name/x", "~no such name/x"},
        {abbreviate, "/h/me", "~"},
        {abbreviate, "/h/me/a", "~/a"},
        {abbreviate, "/h/meadow", "/h/meadow"},
        {standardize, "/a/./b//c/../d/", "/a/b/d"},
        {standardize, "/../..", "/"},
        {standardize, "./a/../b/.", "a/../b"},
        {standardize, "~/./x", "/h/me/x"},
    };
    for (const auto &[message, path, wanted] : rows)
        EXPECT_EQ(describe(send<id>(string(path), message)), wanted) << path;
    ::setenv("HOME", "/", 1);
    EXPECT_EQ("~/a"_ns->stringByExpandingTildeInPath()->view(), "/a");
    ::setenv("HOME", "", 1); // then the user database answers
    EXPECT_EQ("~"_ns->stringByExpandingTildeInPath()->view(), qb::sys::homeDirectory(nullptr));
}

TEST_F(NSStringPathTest, PathsOfSeveralFilesAndForTheSystem) {
    NSArray *const paths =
        "/a"_ns->stringsByAppendingPaths(NSArray::arrayWithObjects("b.html"_ns, "c"_ns, "d.txt"_ns));
    EXPECT_EQ(describe(paths), "(/a/b.html, /a/c, /a/d.txt)");
    EXPECT_EQ(describe(paths->pathsMatchingExtensions(NSArray::arrayWithObjects("txt"_ns, "html"_ns))),
              "(/a/b.html, /a/d.txt)");

    char buffer[4] = "???";
    EXPECT_FALSE("/é"_ns->getFileSystemRepresentation(buffer, 3));
    EXPECT_TRUE("/é"_ns->getFileSystemRepresentation(buffer, 4));
    EXPECT_STREQ(buffer, "/é");
    NSString *const cut = NSString::stringWith(std::string_view("a\0b", 3));
    EXPECT_THROW(cut->fileSystemRepresentation(), InvalidArgumentException);
}
