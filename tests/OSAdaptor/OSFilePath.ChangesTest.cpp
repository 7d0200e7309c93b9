#include "support/Faults.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

class OSFilePathChangesTest : public PoolFixture {
protected:
    struct stat status(std::string_view name) const {
        struct stat status {};
        EXPECT_EQ(::stat((directory_ / name).c_str(), &status), 0) << name;
        return status;
    }

    TemporaryDirectory directory_;
};

TEST_F(OSFilePathChangesTest, MakePathCreatesEachMissingDirectory) {
    const mode_t mask = ::umask(027);
    OSFilePath::makePath(directory_.string("a/b//c/"));
    ::umask(mask);
    EXPECT_EQ(status("a/b/c").st_mode, 040750u);
    OSFilePath::makePath(directory_.string("a/new/../d"));
    EXPECT_TRUE(directory_.has("a/new") && directory_.has("a/d"));
    OSFilePath::makePath(""_ns);
    directory_.write("file", "");
    OSFilePath::makePath(directory_.string("file")); // not looked at
    expectError(100168, directory_ / "file/x Not a directory",
                [&] { OSFilePath::makePath(directory_.string("file/x/y")); });
    NSString *const nulPath = NSString::stringWith(std::string_view("a\0b", 3));
    expectError(100168, "a Invalid argument", [&] { OSFilePath::makePath(nulPath); });
}

TEST_F(OSFilePathChangesTest, RenameReplacesAndReportsBothNames) {
    directory_.write("old", "1");
    directory_.write("new", "2");
    OSFilePath::renamePath(directory_.string("old"), directory_.string("new"));
    EXPECT_EQ(directory_.read("new"), "1");
    EXPECT_FALSE(directory_.has("old"));
    expectError(100202, directory_ / "old " + directory_ / "x" + " No such file or directory",
                [&] { OSFilePath::renamePath(directory_.string("old"), directory_.string("x")); });
    expectError(100202, "<null> x Bad address", [&] { OSFilePath::renamePath(nullptr, "x"_ns); });
}

TEST_F(OSFilePathChangesTest, TouchCreatesFilesAndSetsBothTimes) {
    OSFilePath::touchFileAtPath(directory_.string("new"), std::int64_t{1} << 32);
    EXPECT_EQ(status("new").st_mtime, std::int64_t{1} << 32);
    EXPECT_EQ(status("new").st_atime, std::int64_t{1} << 32);
    directory_.write("full", "abc");
    OSFilePath::touchFileAtPath(directory_.string("full"), 5);
    OSFilePath::touchFileAtPath(directory_.string("full"));
    EXPECT_LE(std::time(nullptr) - status("full").st_mtime, 60);
    EXPECT_EQ(directory_.read("full"), "abc");
    expectError(100235, directory_ / "full/x Not a directory",
                [&] { OSFilePath::touchFileAtPath(directory_.string("full/x")); });
    const Fault fault(Call::close, /*skip=*/0, /*times=*/1, ENOSPC);
    expectError(100024, directory_ / "late No space left on device",
                [&] { OSFilePath::touchFileAtPath(directory_.string("late")); });
}

TEST_F(OSFilePathChangesTest, LinkIsReplacedInOneStep) {
    directory_.makeDirectory("one");
    directory_.makeDirectory("two");
    OSFilePath::symlink(directory_.string("link"), directory_.string("one"));
    OSFilePath::symlink(directory_.string("link"), directory_.string("two"));
    EXPECT_EQ(std::filesystem::read_symlink(directory_ / "link"), directory_ / "two");
    directory_.write("file", "");
    expectError(100170, directory_ / "file",
                [&] { OSFilePath::symlink(directory_.string("link"), directory_.string("file")); });
    expectError(100199, directory_ / "one " + directory_ / "two Is a directory",
                [&] { OSFilePath::symlink(directory_.string("two"), directory_.string("one")); });
    EXPECT_EQ(directory_.names(),
              (std::vector<std::string>{"file", "link", "one", "two"})); // nothing left over
}

TEST_F(OSFilePathChangesTest, DescriptorsOpenWithStdioModesAndStayWithUs) {
    const std::int32_t writer = OSFilePath::openFile(directory_.string("file"), "w");
    ASSERT_GE(writer, 0);
    EXPECT_TRUE(::fcntl(writer, F_GETFD) & FD_CLOEXEC);
    EXPECT_EQ(::write(writer, "abc", 3), 3);
    EXPECT_EQ(OSFilePath::closeFile(writer), 0);
    EXPECT_EQ(OSFilePath::closeFile(writer), -1);
    const std::int32_t appender = OSFilePath::openFile(directory_.string("file"), "a");
    EXPECT_EQ(::write(appender, "d", 1), 1);
    OSFilePath::closeFile(appender);
    EXPECT_EQ(directory_.read("file"), "abcd");
    EXPECT_EQ(OSFilePath::openFile(directory_.string("missing"), "r"), -1);
}

// --- Removal ---

TEST_F(OSFilePathChangesTest, RemovalTakesFilesAndWholeTrees) {
    directory_.write("tree/a/b/\xff\n", "1");
    directory_.write("other/kept", "3");
    directory_.link("../other/kept", "tree/link");
    for (const char *name : {"1", "2", "3", "4"}) {
        directory_.write(std::string("tree/file") + name, "");
        directory_.link(std::string("file") + name, std::string("tree/link") + name);
        directory_.link(std::string("../file") + name, std::string("tree/a/up") + name);
    }
    OSFilePath::removePath(directory_.string("tree"));
    OSFilePath::removePath(directory_.string("missing"));
    EXPECT_EQ(directory_.names(), (std::vector<std::string>{"other"}));
    EXPECT_EQ(directory_.names("other"), (std::vector<std::string>{"kept"})); // a link itself is unlinked
}

TEST_F(OSFilePathChangesTest, RemovalFollowsLinksToDirectoriesAndEndsInLoops) {
    directory_.write("other/gone", "");
    directory_.link("other", "link");
    expectError(100203, directory_ / "link Not a directory",
                [&] { OSFilePath::removePath(directory_.string("link")); });
    EXPECT_TRUE(directory_.names("other").empty());
    directory_.makeDirectory("loop/a");
    directory_.link("..", "loop/a/up");
    expectError(100194, directory_ / "loop/a/up Too many levels of symbolic links",
                [&] { OSFilePath::removePath(directory_.string("loop")); });
    EXPECT_TRUE(directory_.has("loop/a/up"));
}

TEST_F(OSFilePathChangesTest, RemovalStopsAtItsOwnErrorAndEarlierOnesStayInFront) {
    directory_.write("tree/file", "");
    ERRORHANDLER->raiseErrorInFile("earlier", 1, 31999);
    {
        const Fault fault(Call::readdir, /*skip=*/0, /*times=*/1, EIO);
        OSFilePath::removePath(directory_.string("tree"));
    }
    EXPECT_EQ(recordingErrorHandler()->raised.back().values, directory_ / "tree Input/output error");
    OSFilePath::removePath(directory_.string("tree"));
    EXPECT_FALSE(directory_.has("tree"));
    EXPECT_EQ(takenErrors(), "(31999, 100198)");
}

TEST_F(OSFilePathChangesTest, RemovalThroughAnotherDirectoryMovesFirst) {
    directory_.write("tree/file", "");
    directory_.makeDirectory("tmp");
    OSFilePath::removePath(directory_.string("tree/"), directory_.string("tmp"));
    EXPECT_FALSE(directory_.has("tree") || directory_.has("tmp/tree"));
    OSFilePath::removePath(directory_.string("tree"), directory_.string("nowhere")); // there is none
    directory_.write("file", "");
    expectError(100202, directory_ / "file " + directory_ / "nowhere/file No such file or directory",
                [&] { OSFilePath::removePath(directory_.string("file"), directory_.string("nowhere")); });
    EXPECT_TRUE(directory_.has("file"));
}
