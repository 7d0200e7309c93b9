#include "support/DirectoryFixture.h"

using OSFilePathQueriesTest = DirectoryFixture;

TEST_F(OSFilePathQueriesTest, FileInfoFollowsLinksAndFillsEachField) {
    directory_.write("file", "12345");
    directory_.link("file", "link");
    OSFilePath::touchFileAtPath(path("file"), 1000000);
    std::filesystem::permissions(directory_ / "file", std::filesystem::perms(0640));
    OSFileInfo info;
    OSFilePath::fileInfo(&info, path("link"));
    EXPECT_TRUE(info.exists);
    EXPECT_FALSE(info.isDirectory);
    EXPECT_EQ(info.size, 5);
    EXPECT_EQ(info.accessTime, 1000000);
    EXPECT_EQ(info.modificationTime, 1000000);
    EXPECT_GT(info.changeTime, 1000000);
    EXPECT_EQ(info.mode, 0100640u);
    OSFilePath::fileInfo(&info, path("."));
    EXPECT_TRUE(info.exists && info.isDirectory);
    OSFilePath::fileInfo(&info, path("missing"));
    EXPECT_FALSE(info.exists || info.isDirectory || info.size || info.mode);
    EXPECT_ERROR(100194, directory_ / "file/x Not a directory", OSFilePath::fileInfo(&info, path("file/x")));
    EXPECT_REASON(OSFilePath::fileInfo(nullptr, "a"_ns),
                  "OSFilePath fileInfo:atPath: must have a file info that is not NULL.");
}

TEST_F(OSFilePathQueriesTest, WhatDoesNotFitAFieldIsReportedAndNeverCut) {
    directory_.write("long", "");
    directory_.write("late", "x");
    std::filesystem::resize_file(directory_ / "long", std::uintmax_t{3} << 30);
    OSFilePath::touchFileAtPath(path("late"), std::int64_t{1} << 31);
    for (const char *name : {"long", "late"}) {
        OSFileInfo info;
        EXPECT_ERROR(100194, directory_ / name + " Value too large for defined data type",
                     OSFilePath::fileInfo(&info, path(name)));
        EXPECT_EQ(info.size, 0);
    }
    EXPECT_EQ(OSFilePath::fileSizeAtPath(path("long")), INT32_MAX);
}

TEST_F(OSFilePathQueriesTest, WhatIsMissingOrEmptyIsAnsweredWithNo) {
    directory_.write("file", "abc");
    directory_.write("empty", "");
    directory_.link("nowhere", "dangling");
    for (const char *name : {"dangling", "file/x"}) {
        BOOL isDirectory = YES;
        EXPECT_FALSE(OSFilePath::fileExistsAtPath(path(name), &isDirectory)) << name;
        EXPECT_FALSE(isDirectory);
        EXPECT_EQ(OSFilePath::fileSizeAtPath(path(name)), 0) << name;
    }
    EXPECT_EQ(OSFilePath::fileSizeAtPath(path("file")), 3);
    EXPECT_TRUE(OSFilePath::directoryExistsAtPath(path(".")));
    for (const char *name : {".", "empty", "missing"})
        EXPECT_FALSE(OSFilePath::fileContainsDataAtPath(path(name))) << name;
    EXPECT_ERROR(100194, directory_ / "file/x Not a directory",
                 EXPECT_FALSE(OSFilePath::fileContainsDataAtPath(path("file/x"))));
    const Fault interruptions(Call::stat, /*skip=*/0, /*times=*/3, EINTR);
    EXPECT_TRUE(OSFilePath::fileContainsDataAtPath(path("file")));
}

TEST_F(OSFilePathQueriesTest, LinkTargetsAreReadWhole) {
    EXPECT_ERROR(100194, directory_ / "missing No such file or directory",
                 EXPECT_EQ(OSFilePath::symlinkTarget(path("missing")), nullptr));
    const std::string longText(1000, 'x');
    directory_.link("some/\xff where", "link");
    directory_.link(longText, "long");
    directory_.write("file", "");
    EXPECT_EQ(describe(OSFilePath::symlinkTarget(path("link"))), "some/\xff where");
    EXPECT_EQ(describe(OSFilePath::symlinkTarget(path("long"))), longText);
    EXPECT_EQ(OSFilePath::symlinkTarget(""_ns), nullptr);
    EXPECT_ERROR(100222, directory_ / "file", EXPECT_EQ(OSFilePath::symlinkTarget(path("file")), nullptr));
    directory_.link("file", "failing");
    const Fault fault(Call::readlink, /*skip=*/0, /*times=*/1, EIO);
    EXPECT_ERROR(100023, directory_ / "failing Input/output error",
                 EXPECT_EQ(OSFilePath::symlinkTarget(path("failing")), nullptr));
}

TEST_F(OSFilePathQueriesTest, WorkingDirectoryIsReadAndChanged) {
    NSString *const before = OSFilePath::getcwd();
    OSFilePath::chdir(path("."));
    EXPECT_EQ(describe(OSFilePath::getcwd()), directory_.path());
    OSFilePath::chdir(before);
    EXPECT_ERROR(100196, "chdir(" + directory_ / "missing" + ") No such file or directory",
                 OSFilePath::chdir(path("missing")));
    const Fault fault(Call::getcwd, /*skip=*/0, /*times=*/1, ERANGE);
    EXPECT_ERROR(100196, "getcwd() Numerical result out of range", EXPECT_EQ(OSFilePath::getcwd(), nullptr));
}

TEST_F(OSFilePathQueriesTest, GlobGivesTheMatchesOfTheSystem) {
    for (const char *name : {"a1", "a2", "b1", "d/a3"})
        directory_.write(name, "");
    std::set<std::string> names;
    for (id path : *OSFilePath::glob("[ad]*"_ns, path(".")))
        names.insert(describe(path).substr(directory_.path().size()));
    EXPECT_EQ(names, (std::set<std::string>{"/./a1", "/./a2", "/./d"}));
    EXPECT_EQ(OSFilePath::glob(path("z*"))->count(), 0u);
    NSString *const pattern = path("[ad]*/a3");
    for (const auto &[call, system] :
         {std::pair(Call::glob, EACCES), std::pair(Call::opendir, ENOMEM), std::pair(Call::opendir, EMFILE),
          std::pair(Call::readdir, EIO), std::pair(Call::lstat, EIO)}) {
        const Fault fault(call, /*skip=*/0, /*times=*/1, system);
        const bool isMemory = system == ENOMEM;
        EXPECT_ERROR(isMemory ? 100156 : 100240,
                     isMemory ? "" : describe(pattern) + " " + std::strerror(system),
                     EXPECT_EQ(OSFilePath::glob(pattern), nullptr));
    }
    for (const int passing : {EINTR, EACCES, ENOTCONN}) {
        const Fault fault(Call::opendir, /*skip=*/0, /*times=*/1, passing);
        EXPECT_EQ(OSFilePath::glob(pattern)->count(), passing == EINTR ? 1u : 0u);
    }
}
