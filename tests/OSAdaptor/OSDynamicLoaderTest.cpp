#include "support/ServicesFixture.h"

#include <dlfcn.h>

using OSDynamicLoaderTest = ServicesFixture;

// A library of the C library's own that this program does not use.
constexpr const char *kLibrary = "libBrokenLocale.so.1";

// What a process says that ends in the attempt; it exits with 255.
static std::string fatalError(const std::function<void()> &load) {
    const ChildEnd end = runInChild([&] {
        ERRORHANDLER = QBErrorHandler::init().detach(); // without the catalogue
        load();
    });
    EXPECT_EQ(end.status, 255);
    return logLines(end.standardError, end.process);
}

TEST_F(OSDynamicLoaderTest, LibrariesAreLoadedAndStay) {
    const auto isLoaded = [] { return ::dlopen(kLibrary, RTLD_LAZY | RTLD_NOLOAD) != nullptr; };
    ASSERT_FALSE(isLoaded());
    OSDynamicLoader::loadLibraryFromPath(NSString::stringWith(kLibrary));
    EXPECT_TRUE(isLoaded());
    OSDynamicLoader::loadLibraryFromPath(nullptr); // the program itself
}

TEST_F(OSDynamicLoaderTest, NamesLeadToFilesOfTheDirectory) {
    const std::string file = directory_ / "libnone.so";
    EXPECT_EQ(fatalError([&] { OSDynamicLoader::loadLibrary("none"_ns, path("")); }),
              "[T] (P) [] [100241] The library '" + file + "' could not be loaded: " + file +
                  ": cannot open shared object file: No such file or directory\n\n");
    Dl_info library; // of which there is only the beginning
    ASSERT_NE(::dladdr(reinterpret_cast<const void *>(&::puts), &library), 0);
    std::filesystem::copy_file(library.dli_fname, file);
    std::filesystem::resize_file(file, 5000);
    const std::string refusal =
        "[T] (P) [] [100241] The library '" + file + "' could not be loaded: Exec format error\n\n";
    EXPECT_EQ(fatalError([&] { OSDynamicLoader::loadLibrary("none"_ns, path("")); }), refusal);
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); // that nobody writes to
    EXPECT_EQ(fatalError([&] { OSDynamicLoader::loadLibrary("none"_ns, path("")); }), refusal);
    EXPECT_EQ(fatalError([] { OSDynamicLoader::loadLibraryFromPath("/dev/zero"_ns); }),
              "[T] (P) [] [100241] The library '/dev/zero' could not be loaded: Exec format error\n\n");
    EXPECT_EQ(fatalError([&] { OSDynamicLoader::loadLibrary("qb none"_ns, nullptr); }),
              "[T] (P) [] [100241] The library 'libqb none.so' could not be loaded: libqb none.so: "
              "cannot open shared object file: No such file or directory\n\n");
    EXPECT_EQ(
        fatalError([] { OSDynamicLoader::loadLibraryFromPath("libBrokenLocale.so.1\0x"_ns); }),
        "[T] (P) [] [100241] The library 'libBrokenLocale.so.1' could not be loaded: Invalid argument\n\n");
}
