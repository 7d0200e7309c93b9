#include "support/DirectoryFixture.h"

using OSFilePathChangesTest = DirectoryFixture;

TEST_F(OSFilePathChangesTest, MakePathCreatesEachMissingDirectory) {
    const mode_t mask = ::umask(027);
    OSFilePath::makePath(path("a/b//c/"));
    ::umask(mask);
    EXPECT_EQ(status("a/b/c").st_mode, 040750u);
    OSFilePath::makePath(path("a/new/../d"));
    EXPECT_TRUE(directory_.has("a/new") && directory_.has("a/d"));
    OSFilePath::makePath(""_ns);
    directory_.write("file", "");
    OSFilePath::makePath(path("file")); // not looked at
    EXPECT_ERROR(100168, directory_ / "file/x Not a directory", OSFilePath::makePath(path("file/x/y")));
    EXPECT_ERROR(100168, "a Invalid argument", OSFilePath::makePath("a\0b"_ns));
}

TEST_F(OSFilePathChangesTest, RenameReplacesAndReportsBothNames) {
    directory_.write("old", "1");
    directory_.write("new", "2");
    OSFilePath::renamePath(path("old"), path("new"));
    EXPECT_EQ(directory_.read("new"), "1");
    EXPECT_FALSE(directory_.has("old"));
    EXPECT_ERROR(100202, directory_ / "old " + directory_ / "x" + " No such file or directory",
                 OSFilePath::renamePath(path("old"), path("x")));
    EXPECT_ERROR(100202, "<null> x Bad address", OSFilePath::renamePath(nullptr, "x"_ns));
}

TEST_F(OSFilePathChangesTest, TouchCreatesFilesAndSetsBothTimes) {
    OSFilePath::touchFileAtPath(path("new"), std::int64_t{1} << 32);
    EXPECT_EQ(status("new").st_mtime, std::int64_t{1} << 32);
    EXPECT_EQ(status("new").st_atime, std::int64_t{1} << 32);
    directory_.write("full", "abc");
    OSFilePath::touchFileAtPath(path("full"), 5);
    OSFilePath::touchFileAtPath(path("full"));
    EXPECT_LE(std::time(nullptr) - status("full").st_mtime, 60);
    EXPECT_EQ(directory_.read("full"), "abc");
    EXPECT_ERROR(100235, directory_ / "full/x Not a directory", OSFilePath::touchFileAtPath(path("full/x")));
    const Fault fault(Call::close, /*skip=*/0, /*times=*/1, ENOSPC);
    EXPECT_ERROR(100024, directory_ / "late No space left on device",
                 OSFilePath::touchFileAtPath(path("late")));
}

TEST_F(OSFilePathChangesTest, NoPathIsAnErrorOfEachOperation) {
    NSString *const some = path("some");
    const std::string none = "<null> Bad address", cut = "a Invalid argument";
    EXPECT_ERROR(100194, none, OSFilePath::removePath(nullptr));
    EXPECT_ERROR(100194, none, OSFilePath::_removePath(nullptr));
    EXPECT_ERROR(100194, none, OSFilePath::copyPath(nullptr, some, NO));
    EXPECT_ERROR(100194, none, OSFilePath::copyPath(some, nullptr, NO));
    EXPECT_ERROR(100194, none, _copyPath("some", nullptr, NO));
    EXPECT_ERROR(100194, none, _copyFile(nullptr, "some", nullptr));
    EXPECT_ERROR(100194, none, OSFilePath::fileAtPath(nullptr, some));
    EXPECT_ERROR(100235, none, OSFilePath::touchFileAtPath(nullptr));
    EXPECT_ERROR(100240, none, OSFilePath::glob(nullptr));
    EXPECT_ERROR(100194, cut, OSFilePath::removePath("a\0b"_ns));
    EXPECT_ERROR(100194, cut, OSFilePath::copyPath("a\0b"_ns, some, NO));
    EXPECT_ERROR(100194, cut, OSFilePath::symlinkTarget("a\0b"_ns));
    EXPECT_ERROR(100235, cut, OSFilePath::touchFileAtPath("a\0b"_ns));
    EXPECT_ERROR(100240, cut, OSFilePath::glob("a\0b"_ns));
}

TEST_F(OSFilePathChangesTest, LinkIsReplacedInOneStep) {
    directory_.makeDirectory("one");
    directory_.makeDirectory("two");
    OSFilePath::symlink(path("link"), path("one"));
    OSFilePath::symlink(path("link"), path("two"));
    EXPECT_EQ(std::filesystem::read_symlink(directory_ / "link"), directory_ / "two");
    directory_.write("file", "");
    EXPECT_ERROR(100170, directory_ / "file", OSFilePath::symlink(path("link"), path("file")));
    EXPECT_ERROR(100199, directory_ / "one " + directory_ / "two Is a directory",
                 OSFilePath::symlink(path("two"), path("one")));
    EXPECT_EQ(directory_.names(), (Strings{"file", "link", "one", "two"})); // nothing left over
}

TEST_F(OSFilePathChangesTest, DescriptorsOpenWithStdioModesAndStayWithUs) {
    const std::int32_t writer = OSFilePath::openFile(path("file"), "w");
    ASSERT_GE(writer, 0);
    EXPECT_TRUE(::fcntl(writer, F_GETFD) & FD_CLOEXEC);
    EXPECT_EQ(::write(writer, "abc", 3), 3);
    EXPECT_EQ(OSFilePath::closeFile(writer), 0);
    EXPECT_EQ(OSFilePath::closeFile(writer), -1);
    const std::int32_t appender = OSFilePath::openFile(path("file"), "a");
    EXPECT_EQ(::lseek(appender, 0, SEEK_CUR), 3);
    EXPECT_EQ(::write(appender, "d", 1), 1);
    OSFilePath::closeFile(appender);
    EXPECT_EQ(directory_.read("file"), "abcd");
    EXPECT_EQ(OSFilePath::openFile(path("missing"), "r"), -1);
}

// --- Removal ---

TEST_F(OSFilePathChangesTest, RemovalTakesFilesAndWholeTrees) {
    directory_.write("tree/a/b/\xff\n", "1");
    directory_.write("other/kept", "3");
    directory_.link("../other/kept", "tree/link");
    for (const std::string name : {"1", "2", "3", "4"}) {
        directory_.write("tree/file" + name, "");
        directory_.link("file" + name, "tree/link" + name);
        directory_.link("link" + name, "tree/more" + name);
        directory_.makeDirectory("tree/d" + name);
        directory_.link("../more" + name, "tree/a/up" + name);
        directory_.link("../a/up" + name, "tree/d" + name + "/beside");
    }
    OSFilePath::removePath(path("tree"));
    OSFilePath::removePath(path("missing"));
    EXPECT_EQ(directory_.names(), (Strings{"other"}));
    EXPECT_EQ(directory_.names("other"), (Strings{"kept"})); // a link itself is unlinked
}

TEST_F(OSFilePathChangesTest, RemovalFollowsLinksToDirectoriesAndEndsInLoops) {
    directory_.link("../other", "around/link");
    for (const char *link : {"around", "around/link"}) {
        for (const std::string name : {"1", "2", "3", "4"}) {
            directory_.write("other/gone" + name, "");
            directory_.link("gone" + name, "other/link" + name);
        }
        EXPECT_ERROR(100203, directory_ / "around/link Not a directory", OSFilePath::removePath(path(link)));
        EXPECT_TRUE(directory_.names("other").empty());
    }
    for (const std::string name : {"1", "2"}) {
        directory_.write("linked" + name + "/file", "");
        directory_.link("file", "linked" + name + "/link");
        directory_.link("../linked" + name, "tree/" + name);
    }
    OSFilePath::removePath(path("tree")); // ends in whichever comes first
    EXPECT_EQ(takenErrors(), "(100203)");
    EXPECT_EQ(directory_.names("linked1").size() + directory_.names("linked2").size(), 2u);
    directory_.makeDirectory("loop/a");
    directory_.link("..", "loop/a/up");
    EXPECT_ERROR(100194, directory_ / "loop/a/up Too many levels of symbolic links",
                 OSFilePath::removePath(path("loop")));
    EXPECT_TRUE(directory_.has("loop/a/up"));
    directory_.link("nowhere", "kept/link");
    EXPECT_ERROR(100203, directory_ / "kept Directory not empty", OSFilePath::removePath(path("kept")));
}

TEST_F(OSFilePathChangesTest, RemovalStopsAtItsOwnErrorAndEarlierOnesStayInFront) {
    directory_.write("tree/file", "");
    directory_.link("file", "tree/link");
    ERRORHANDLER->raiseErrorInFile("earlier", 1, 31999);
    OSFilePath::_removePath((directory_ / "tree").c_str());
    EXPECT_TRUE(directory_.has("tree/link"));
    const Fault fault(Call::readdir, /*skip=*/0, /*times=*/1, EIO);
    OSFilePath::removePath(path("tree"));
    EXPECT_EQ(recordingErrorHandler()->raised.back().values, directory_ / "tree Input/output error");
    OSFilePath::removePath(path("tree"));
    EXPECT_FALSE(directory_.has("tree"));
    EXPECT_EQ(takenErrors(), "(31999, 100198)");
}

TEST_F(OSFilePathChangesTest, CallThatFailsInARemovalIsAnErrorOfItsPath) {
    directory_.write("tree/file", "");
    for (const auto &[call, failing] :
         {std::pair(Call::opendir, "tree"), std::pair(Call::unlink, "tree/file"),
          std::pair(Call::rmdir, "tree")}) {
        const Fault fault(call, /*skip=*/0, /*times=*/1, EIO);
        EXPECT_ERROR(100203, directory_ / failing + " Input/output error",
                     OSFilePath::removePath(path("tree")));
    }
}

TEST_F(OSFilePathChangesTest, RemovalThroughAnotherDirectoryMovesFirst) {
    directory_.write("tree/file", "");
    directory_.makeDirectory("tmp");
    OSFilePath::removePath(path("tree/"), path("tmp"));
    EXPECT_FALSE(directory_.has("tree") || directory_.has("tmp/tree"));
    OSFilePath::removePath(path("tree"), path("nowhere")); // there is none
    directory_.write("file", "");
    EXPECT_ERROR(100202, directory_ / "file " + directory_ / "nowhere/file No such file or directory",
                 OSFilePath::removePath(path("file"), path("nowhere")));
    EXPECT_TRUE(directory_.has("file"));
}
