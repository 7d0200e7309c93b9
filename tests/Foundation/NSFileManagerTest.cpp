#include "support/DirectoryFixture.h"

using namespace std::string_literals;

static NSString *const typeBeforeMain = NSFileTypeRegular;

struct NSFileManagerTest : DirectoryFixture {
    /// A directory "tree" with a file, a link and a directory with a file in it.
    void makeTree() {
        directory_.write("tree/file", "some bytes");
        directory_.write("tree/inner/deep", "");
        directory_.link("file", "tree/link");
        ::chmod((directory_ / "tree/file").c_str(), 0640);
        ::chmod((directory_ / "tree/inner").c_str(), 0750);
    }

    NSFileManager *manager_ = NSFileManager::defaultManager();
};

static std::string sorted(NSArray *names) {
    return describe(names->sortedArrayUsingSelector("compare:"_sel));
}

TEST_F(NSFileManagerTest, FilesAreMadeReadAndTold) {
    NSData *content = dataOf("a\0b"s);
    NSDictionary *attributes = NSDictionary::dictionaryWith(
        {{NSFilePosixPermissions, number(0600)},
         {NSFileModificationDate, NSDate::dateWithTimeIntervalSince1970(1000.5)}});
    EXPECT_TRUE(manager_->createFileAtPath(path("f"), content, attributes));
    EXPECT_TRUE(manager_->contentsAtPath(path("f"))->isEqual(content));
    NSDictionary *told = manager_->fileAttributesAtPath(path("f"), /*traverseLink=*/YES);
    EXPECT_EQ(told->filePosixPermissions(), 0600u);
    EXPECT_EQ(told->fileSize(), 3u);
    NSDictionary *const owned = NSDictionary::dictionaryWith(
        {{NSFileOwnerAccountID, number(7)}, {NSFileGroupOwnerAccountID, number(8)}});
    EXPECT_TRUE(owned->fileOwnerAccountID() == 7 && owned->fileGroupOwnerAccountID() == 8);
    EXPECT_EQ(told->fileType(), NSFileTypeRegular);
    EXPECT_EQ(told->fileType(), typeBeforeMain); // as static objects of a program find it
    EXPECT_TRUE(told->fileModificationDate()->isEqual(NSDate::dateWithTimeIntervalSince1970(1000.5)));
    const struct stat info = status("f");
    EXPECT_TRUE(told->fileSystemFileNumber() == info.st_ino && told->fileSystemNumber() == info.st_dev);
    EXPECT_TRUE(told->fileOwnerAccountID() == info.st_uid && told->fileGroupOwnerAccountID() == info.st_gid);

    for (const double seconds : {1e19, -1e19}) { // the file system has limits of its own
        attributes = NSDictionary::dictionaryWith(
            {{NSFileModificationDate, NSDate::dateWithTimeIntervalSince1970(seconds)}});
        EXPECT_TRUE(manager_->changeFileAttributes(attributes, path("f")));
        EXPECT_EQ(status("f").st_mtime > 1000, seconds > 0);
    }
    attributes = NSDictionary::dictionaryWith({{NSFilePosixPermissions, "384"_ns}}); // no number
    EXPECT_FALSE(manager_->changeFileAttributes(attributes, path("f")) ||
                 manager_->createFileAtPath(path("f"), nullptr, attributes) ||
                 manager_->createDirectoryAtPath(path("new"), attributes) ||
                 manager_->fileExistsAtPath(path("new")));
    EXPECT_TRUE(manager_->contentsAtPath(path("f"))->isEqual(content));

    BOOL isDirectory = YES;
    EXPECT_TRUE(manager_->fileExistsAtPath(path("f"), &isDirectory) && !isDirectory);
    EXPECT_TRUE(manager_->fileExistsAtPath(path("."), &isDirectory) && isDirectory);
    EXPECT_TRUE(!manager_->fileExistsAtPath(path("none"), &isDirectory) && !isDirectory);
    EXPECT_TRUE(manager_->isReadableFileAtPath(path("f")) && manager_->isWritableFileAtPath(path("f")) &&
                manager_->isDeletableFileAtPath(path("f")));
    EXPECT_FALSE(
        manager_->isExecutableFileAtPath(path("f")) || manager_->isDeletableFileAtPath(path("none")) ||
        manager_->isReadableFileAtPath(path("none")) || manager_->isWritableFileAtPath(path("none")));
    EXPECT_TRUE(manager_->isExecutableFileAtPath("/bin/sh"_ns));
}

TEST_F(NSFileManagerTest, LinksAreMadeReadAndNotFollowedUnlessAsked) {
    const std::string longText(400, 'x');
    EXPECT_TRUE(manager_->createSymbolicLinkAtPath(path("link"), NSString::stringWith(longText)));
    EXPECT_EQ(manager_->pathContentOfSymbolicLinkAtPath(path("link"))->view(), longText);
    EXPECT_FALSE(manager_->fileExistsAtPath(path("link")));
    EXPECT_EQ(manager_->fileAttributesAtPath(path("link"), /*traverseLink=*/YES), nullptr);
    EXPECT_EQ(manager_->fileAttributesAtPath(path("link"), /*traverseLink=*/NO)->objectForKey(NSFileType),
              NSFileTypeSymbolicLink);
}

TEST_F(NSFileManagerTest, TreesAreListedCopiedComparedMovedAndRemoved) {
    makeTree();
    EXPECT_EQ(sorted(manager_->directoryContentsAtPath(path("tree"))), "(file, inner, link)");
    EXPECT_EQ(sorted(manager_->subpathsAtPath(path("tree"))), "(file, inner, inner/deep, link)");
    EXPECT_TRUE(manager_->copyPath(path("tree"), path("copy")));
    EXPECT_TRUE(manager_->contentsEqualAtPath(path("tree"), path("copy")));
    EXPECT_EQ(manager_->fileAttributesAtPath(path("copy/file"), NO)->filePosixPermissions(), 0640u);
    EXPECT_EQ(manager_->fileAttributesAtPath(path("copy/inner"), NO)->filePosixPermissions(), 0750u);
    EXPECT_EQ(describe(manager_->pathContentOfSymbolicLinkAtPath(path("copy/link"))), "file");
    directory_.write("copy/inner/deep", "x");
    EXPECT_FALSE(manager_->contentsEqualAtPath(path("tree"), path("copy")));
    EXPECT_FALSE(manager_->copyPath(path("tree"), path("copy"))); // is there
    EXPECT_FALSE(manager_->copyPath(path("tree"), path("tree/inner/tree")));
    EXPECT_TRUE(manager_->removeFileAtPath(path("copy")));
    EXPECT_TRUE(manager_->movePath(path("tree"), path("copy")));
    EXPECT_EQ(directory_.names(), Strings{"copy"});
}

TEST_F(NSFileManagerTest, AMoveToAnotherFileSystemCopiesAndRemoves) {
    makeTree();
    const Fault otherSystem(Call::rename, 0, 1, EXDEV);
    const Fault noKernelCopy(Call::copy_file_range, 0, 0, EXDEV);
    EXPECT_TRUE(manager_->movePath(path("tree"), path("moved")));
    EXPECT_FALSE(directory_.has("tree"));
    EXPECT_EQ(directory_.read("moved/file"), "some bytes");
}

TEST_F(NSFileManagerTest, FailuresAreAnsweredAndRaiseNothing) {
    makeTree();
    const Fault full(Call::write, 0, 1, ENOSPC);
    EXPECT_FALSE(manager_->createFileAtPath(path("new"), dataOf("abc"), nullptr));
    EXPECT_FALSE(directory_.has("new"));
    // The directories above the target are opened and closed too, the root twice.
    const auto above =
        static_cast<unsigned>(std::count(directory_.path().begin(), directory_.path().end(), '/') + 2);
    for (const Call call : {Call::open, Call::opendir, Call::readdir, Call::mkdir, Call::symlink,
                            Call::fchmod, Call::chmod, Call::readlink, Call::lstat, Call::close}) {
        const Fault fault(call, call == Call::lstat ? 2 : call == Call::close ? above : 0, 1, EIO);
        EXPECT_FALSE(manager_->copyPath(path("tree"), path("copy")));
        EXPECT_TRUE(errno == EIO && fault.hits() == 1u) << static_cast<unsigned>(call);
        manager_->removeFileAtPath(path("copy"));
    }
    const Fault stuck(Call::unlink, 0, 1, EBUSY);
    EXPECT_FALSE(manager_->removeFileAtPath(path("tree")));
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(manager_->subpathsAtPath(path("tree"))->count(), 1u); // all but that one is gone
}

TEST_F(NSFileManagerTest, PathsThatNameNothingAreRefused) {
    directory_.write("f", "x");
    NSString *cut = NSString::stringWith(directory_ / "f"s + "\0g"s);
    for (NSString *bad : {cut, ""_ns}) {
        EXPECT_FALSE(manager_->fileExistsAtPath(bad));
        EXPECT_FALSE(manager_->createFileAtPath(bad, nullptr, nullptr));
        EXPECT_FALSE(manager_->copyPath(path("f"), bad));
    }
}

TEST_F(NSFileManagerTest, DirectoriesAreMadeAndTheWorkingOneChanges) {
    NSDictionary *attributes = NSDictionary::dictionaryWith({{NSFilePosixPermissions, number(0700)}});
    EXPECT_TRUE(manager_->createDirectoryAtPath(path("d"), attributes));
    EXPECT_EQ(manager_->fileAttributesAtPath(path("d"), NO)->filePosixPermissions(), 0700u);
    NSString *before = manager_->currentDirectoryPath();
    EXPECT_TRUE(manager_->changeCurrentDirectoryPath(path("d")));
    EXPECT_EQ(manager_->currentDirectoryPath()->view(), directory_ / "d");
    EXPECT_TRUE(manager_->createFileAtPath("here"_ns, nullptr, nullptr));
    EXPECT_TRUE(manager_->changeCurrentDirectoryPath(before));
    EXPECT_EQ(directory_.names("d"), Strings{"here"});
}

TEST_F(NSFileManagerTest, EnumeratorsTellOfEachFileAndSkipDirectories) {
    directory_.write("tree/a/x", "123");
    directory_.write("tree/a/y/z", "");
    directory_.write("tree/b/x", "");
    ::chmod((directory_ / "tree").c_str(), 0750);
    NSDirectoryEnumerator *const enumerator = manager_->enumeratorAtPath(path("tree"));
    EXPECT_EQ(enumerator->directoryAttributes()->filePosixPermissions(), 0750u);
    std::set<std::string> seen;
    while (const id next = enumerator->nextObject()) {
        seen.insert(describe(next));
        if (describe(next) == "a/y" || describe(next) == "b")
            enumerator->skipDescendents();
        EXPECT_EQ(enumerator->fileAttributes()->fileSize() == 3, describe(next) == "a/x");
    }
    EXPECT_EQ(seen, (std::set<std::string>{"a", "a/x", "a/y", "b"}));
    EXPECT_EQ(manager_->enumeratorAtPath(path("tree/a/x")), nullptr);
}

TEST_F(NSFileManagerTest, LinkedTreesHaveTheSameFiles) {
    makeTree();
    EXPECT_TRUE(manager_->linkPath(path("tree"), path("linked")));
    directory_.write("tree/file", "other bytes");
    EXPECT_EQ(directory_.read("linked/file"), "other bytes");
    EXPECT_STREQ(manager_->fileSystemRepresentationWithPath("a"_ns), "a");
    EXPECT_EQ(manager_->stringWithFileSystemRepresentation("abc", 2)->view(), "ab");
}

TEST_F(NSFileManagerTest, DeepTreesNeedNoStack) {
    constexpr int kDepth = 1000; // the time for a path grows with its length
    NSString *const before = manager_->currentDirectoryPath();
    ASSERT_TRUE(manager_->changeCurrentDirectoryPath(path(".")));
    std::string deep = "t";
    ASSERT_EQ(::mkdir("t", 0700), 0);
    for (int i = 1; i < kDepth; ++i)
        ASSERT_EQ(::mkdir((deep += "/d").c_str(), 0700), 0);
    EXPECT_TRUE(runOnSmallStack([&] {
        EXPECT_EQ(manager_->subpathsAtPath("t"_ns)->count(), kDepth - 1u);
        EXPECT_TRUE(manager_->copyPath("t"_ns, "c"_ns));
        EXPECT_TRUE(manager_->contentsEqualAtPath("t"_ns, "c"_ns));
        // The directory that is copied is looked for upwards from there.
        EXPECT_FALSE(manager_->copyPath("t"_ns, NSString::stringWith(deep + "/t")));
        EXPECT_EQ(errno, EINVAL);
        EXPECT_TRUE(manager_->removeFileAtPath("t"_ns) && manager_->removeFileAtPath("c"_ns));
    }));
    EXPECT_TRUE(manager_->changeCurrentDirectoryPath(before));
}
