#include "System/Descriptor.h"
#include "support/DirectoryFixture.h"

namespace fs = std::filesystem;

struct OSFilePathCopyingTest : DirectoryFixture {
    void copy(std::string_view source, std::string_view target, BOOL renameSource = NO) {
        OSFilePath::copyPath(path(source), path(target), renameSource);
    }
    std::string linkText(std::string_view name) const { return fs::read_symlink(directory_ / name); }
};

TEST_F(OSFilePathCopyingTest, FileKeepsAllItsPermissionsAndReplacesALongerOne) {
    directory_.write("file", "short");
    ASSERT_EQ(::chmod((directory_ / "file").c_str(), 04777), 0);
    copy("file", "new/here");
    EXPECT_EQ(mode("new/here/file"), 04777u);
    directory_.write("new/old", "a longer one");
    _copyFile((directory_ / "file").c_str(), (directory_ / "new").c_str(), "old");
    EXPECT_EQ(directory_.read("new/old"), "short");
}

TEST_F(OSFilePathCopyingTest, HolesStayHoles) {
    directory_.write("sparse", "begin");
    fs::resize_file(directory_ / "sparse", 50000000);
    const Fault signals(Call::lseek, /*skip=*/0, /*times=*/3, EINTR);
    copy("sparse", "copy", YES);
    EXPECT_EQ(fs::file_size(directory_ / "copy"), 50000000u);
    EXPECT_FALSE(OSFilePath::fileAtPath(path("sparse"), path("copy")));
    EXPECT_LT(status("copy").st_blocks, 10000);
    fs::resize_file(directory_ / "sparse", 50000);
    ASSERT_EQ(::mkfifo((directory_ / "pipe").c_str(), 0600), 0); // which has none
    const sys::Descriptor reader(sys::open((directory_ / "pipe").c_str(), O_RDONLY | O_NONBLOCK));
    _copyFile((directory_ / "sparse").c_str(), directory_.path().c_str(), "pipe");
    EXPECT_EQ(sys::read(reader.get(), std::string(60000, '.').data(), 60000), 50000);
    const Fault fault(Call::lseek, /*skip=*/1, /*times=*/1, EIO); // where does the data end?
    EXPECT_ERROR(100023, directory_ / "sparse Input/output error", copy("sparse", "other", YES));
}

TEST_F(OSFilePathCopyingTest, TargetThatIsTakenOrNoDirectoryIsRefused) {
    directory_.write("file", "1");
    directory_.write("taken", "2");
    EXPECT_ERROR(100170, directory_ / "taken", copy("file", "taken"));
    EXPECT_ERROR(100170, directory_ / "taken", copy("file", "taken/x", YES));
    directory_.write("tree/entry", "");
    directory_.write("place/tree", "a file where the directory should be");
    EXPECT_ERROR(100170, directory_ / "place/tree", copy("tree", "place"));
    EXPECT_ERROR(100195, directory_ / "file " + directory_ / "taken", copy("file", "taken", YES));
    EXPECT_EQ(directory_.read("taken"), "2");
}

TEST_F(OSFilePathCopyingTest, LinksInsideStayLinksAndOthersBecomeCopies) {
    directory_.write("tree/d/file", "inside");
    directory_.write("outside/file", "outside");
    directory_.link("../d/file", "tree/e/relative");
    directory_.link(directory_ / "tree/d", "tree/absolute");
    directory_.link("../outside/file", "tree/copied");
    directory_.link("copied", "tree/alias");
    directory_.link(directory_ / "outside", "tree/e/whole");
    copy("tree", "new/name", YES);
    EXPECT_EQ(linkText("new/name/e/relative"), "../d/file");
    EXPECT_EQ(linkText("new/name/absolute"), "d");
    EXPECT_EQ(linkText("new/name/alias"), "copied");
    for (const char *file : {"copied", "e/whole/file"}) {
        EXPECT_FALSE(fs::is_symlink(directory_ / (std::string("new/name/") + file))) << file;
        EXPECT_EQ(directory_.read(std::string("new/name/") + file), "outside") << file;
    }
    _copyLink((directory_ / "tree/copied").c_str(), (directory_ / "new").c_str(), nullptr);
    EXPECT_EQ(directory_.read("new/file"), "outside"); // under the name of what it points to
}

TEST_F(OSFilePathCopyingTest, LinksToTheirOwnDirectoryNeverLeadToTheRoot) {
    const Strings texts = {".", "./", "../tree", directory_ / "tree//", directory_ / "tree/."};
    for (std::size_t i = 0; i < texts.size(); ++i)
        directory_.link(texts[i], "tree/" + std::to_string(i));
    for (const char *source : {"tree", "tree/"}) {
        OSFilePath::copyPath(NSString::stringWith(directory_ / source), path("copy"), YES);
        for (std::size_t i = 0; i < texts.size(); ++i)
            EXPECT_EQ(fs::canonical(directory_ / "copy/" + std::to_string(i)),
                      fs::canonical(directory_ / "copy"))
                << source << " " << texts[i];
        fs::remove_all(directory_ / "copy");
    }
}

TEST_F(OSFilePathCopyingTest, LoopsEndWithAnError) {
    directory_.write("tree/file", "");
    const std::string loop = " Too many levels of symbolic links";
    EXPECT_ERROR(100194, directory_ / "tree/in/tree" + loop, copy("tree", "tree/in"));
    EXPECT_ERROR(100194, directory_ / "tree/file" + loop, copy("tree/file", "tree"));
    directory_.makeDirectory("outer/a");
    directory_.link(directory_ / "", "outer/a/everything"); // which holds the tree that is being copied
    EXPECT_ERROR(100194, directory_ / "" + "/outer" + loop, copy("outer", "copy"));
    directory_.link("nowhere", "dangling");
    EXPECT_ERROR(100194, directory_ / "nowhere No such file or directory", copy("dangling", "copy"));
    EXPECT_EQ(directory_.read("tree/file"), "");
}

TEST_F(OSFilePathCopyingTest, NamesAreLimitedAndNeedNotBeUtf8) {
    const std::string longest(254, 'n');
    directory_.write("tree/" + longest, "1");
    directory_.write("tree/\xff\xfe *", "2");
    ASSERT_EQ(::mkfifo((directory_ / "tree/pipe").c_str(), 0600), 0);
    copy("tree", "copy");
    EXPECT_EQ(directory_.read("copy/tree/" + longest), "1");
    EXPECT_EQ(directory_.read("copy/tree/\xff\xfe *"), "2");
    EXPECT_FALSE(directory_.has("copy/tree/pipe")); // left out without a message
    const std::string tooLong = longest + "n";
    directory_.write("long/" + tooLong, "");
    directory_.makeDirectory("directory/" + tooLong);
    directory_.link("other", "link/" + tooLong);
    directory_.write("link/other", "");
    for (const char *tree : {"long", "directory", "link"})
        EXPECT_ERROR(100197, tooLong, copy(tree, "copy"));
    EXPECT_ERROR(100197, tooLong, _copyDir("x", "y", tooLong.c_str()));
}

TEST_F(OSFilePathCopyingTest, PlainReadingAndWritingTakesOverFromTheKernel) {
    const std::string bytes = std::string(200000, 'a') + "end";
    directory_.write("file", bytes);
    const Fault noKernelCopy(Call::copy_file_range, /*skip=*/0, /*times=*/0, EXDEV);
    {
        const Fault interruptions(Call::read, /*skip=*/0, /*times=*/4, EINTR);
        const Fault pieces(Call::write, /*skip=*/0, /*times=*/0, sys::ShortTransfer{70000});
        copy("file", "copy");
        EXPECT_EQ(directory_.read("copy/file"), bytes);
    }
    {
        const Fault nothing(Call::write, /*skip=*/0, /*times=*/0, sys::ShortTransfer{0}); // not for ever
        EXPECT_ERROR(100024, directory_ / "copy/file Input/output error", copy("file", "copy"));
    }
    const Fault end(Call::read, /*skip=*/0, /*times=*/1, sys::ShortTransfer{0}); // shorter than it says
    copy("file", "copy");
    EXPECT_EQ(directory_.read("copy/file"), "");
    const std::tuple<Call, int, std::string> rows[] = {{Call::read, 100023, directory_ / "file"},
                                                       {Call::write, 100024, directory_ / "copy/file"},
                                                       {Call::close, 100024, directory_ / "copy/file"}};
    for (const auto &[call, number, path] : rows) {
        const Fault fault(call, /*skip=*/0, /*times=*/1, ENOSPC);
        EXPECT_ERROR(number, path + " No space left on device", copy("file", "copy"));
    }
    EXPECT_ERROR(100039, "missing", _copyFile("missing", "x", nullptr));
}

TEST_F(OSFilePathCopyingTest, CallThatFailsInATreeIsItsOwnError) {
    directory_.write("tree/file", "");
    directory_.link("file", "tree/link");
    const std::string tree = directory_ / "tree";
    const std::tuple<Call, int, std::string> rows[] = {
        {Call::opendir, 100196, tree},
        {Call::readdir, 100198, tree},
        {Call::symlink, 100199, "file " + directory_ / "copy/tree/link"}};
    for (const auto &[call, number, values] : rows) {
        const Fault fault(call, /*skip=*/0, /*times=*/1, EIO);
        EXPECT_ERROR(number, values + " Input/output error", copy("tree", "copy"));
    }
}

TEST_F(OSFilePathCopyingTest, TargetsBelowFilesAreErrors) {
    directory_.write("file", "");
    directory_.write("other", "");
    EXPECT_ERROR(100194, directory_ / "file/x Not a directory", copy("other", "file/x"));
    EXPECT_ERROR(100194, directory_ / "file/x Not a directory",
                 _copyFile((directory_ / "file/x").c_str(), directory_.path().c_str(), nullptr));
    directory_.write("tree/entry", "");
    directory_.makeDirectory("place");
    const Fault fault(Call::mkdir, /*skip=*/0, /*times=*/1, EROFS);
    EXPECT_ERROR(100168, directory_ / "place/tree Read-only file system", copy("tree", "place"));
}

TEST_F(OSFilePathCopyingTest, PendingErrorsStopACopyBeforeItStarts) {
    directory_.write("file", "");
    ERRORHANDLER->raiseErrorInFile("earlier", 1, 31999);
    copy("file", "copy", YES);
    copy("file", "new/copy", YES);
    EXPECT_EQ(directory_.names(), (Strings{"file"}));
    EXPECT_EQ(takenErrors(), "(31999)");
}

TEST_F(OSFilePathCopyingTest, DepthCostsNeitherStackNorDescriptors) {
    const std::string tree = directory_ / "t";
    std::string deep = tree;
    while (deep.size() + 2 < 4000)
        deep += "/ddd";
    OSFilePath::makePath(NSString::stringWith(deep));
    directory_.write(deep.substr(directory_.path().size() + 1) + "/f", "bottom");
    NSString *const source = path("t"), *const copied = path("u");
    ASSERT_TRUE(runOnSmallStack([&] { OSFilePath::copyPath(source, copied, /*renameSource=*/YES); }));
    deep[tree.size() - 1] = 'u';
    EXPECT_TRUE(OSFilePath::fileContainsDataAtPath(NSString::stringWith(deep + "/f")));
    ASSERT_TRUE(runOnSmallStack([&] { OSFilePath::removePath(source); }));
    OSFilePath::removePath(copied);
    EXPECT_TRUE(directory_.names().empty());
}

// Files of random sizes, rights and names, in directories in each other, and links among them.
TEST_F(OSFilePathCopyingTest, CopyOfARandomTreeIsTheTree) {
    Random random;
    const std::string pieces[] = {"a", "\xff", " ", "..", "\n", "\xc3\xa4"};
    Strings directories = {"outside", "tree"}, files;
    for (int i = 0; i < 150; ++i) {
        const std::string parent = directories[random.below(directories.size())];
        const std::string entry =
            parent + "/" + randomText(random, random.below(12), pieces) + std::to_string(i);
        const std::size_t kind = random.below(4);
        if (kind == 0) {
            directories.push_back(entry);
            directory_.makeDirectory(entry);
        } else if (kind == 1 && !files.empty()) {
            const fs::path target = directory_ / files[random.below(files.size())];
            directory_.link(target.lexically_relative(directory_ / parent).native(), entry);
        } else {
            files.push_back(entry);
            directory_.write(entry, std::string(random.below(random.below(4) ? 300 : 300000), 'x'));
            fs::permissions(directory_ / entry, fs::perms(0400 | (random.bits() & 0777)));
        }
    }
    directory_.makeDirectory("tree");
    copy("tree", "copies");
    const fs::path tree = directory_ / "tree", copies = directory_ / "copies/tree";
    EXPECT_EQ(std::system(("diff -r '" + tree.native() + "' '" + copies.native() + "'").c_str()), 0);
    for (const auto &entry : fs::recursive_directory_iterator(copies)) {
        const fs::path copied = entry.path(), source = tree / copied.lexically_relative(copies);
        if (entry.is_symlink()) // to what is inside, so it leads to its copy
            EXPECT_EQ(fs::canonical(copied).lexically_relative(copies),
                      fs::canonical(source).lexically_relative(tree));
        else if (!entry.is_directory()) {
            EXPECT_EQ(fs::status(source).permissions(), fs::status(copied).permissions()) << copied;
            EXPECT_TRUE(!fs::is_symlink(source) ||
                        fs::canonical(source).native().starts_with(directory_ / "outside"));
        }
    }
}
