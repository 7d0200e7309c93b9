#include "support/PoolFixture.h"

using EnvironmentTest = PoolFixture;

// An open file with those bytes; closed with the pointer.
static std::unique_ptr<std::FILE, int (*)(std::FILE *)> fileWith(const std::string &bytes) {
    std::FILE *const file = std::tmpfile();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    return {file, &std::fclose};
}

TEST_F(EnvironmentTest, IsReadAndChangedByItsNames) {
    static char variable[] = "QB_TEST_VALUE=a=b";
    EXPECT_EQ(OSEnvironment::putEnv(variable), 0);
    EXPECT_STREQ(OSEnvironment::getEnv("QB_TEST_VALUE"), "a=b");
    EXPECT_EQ(OSEnvironment::unsetEnv("QB_TEST_VALUE"), 0);
    EXPECT_EQ(OSEnvironment::getEnv("QB_TEST_VALUE"), nullptr);
    const Fault noMemory(Call::putenv, 0, 0, ENOMEM);
    EXPECT_NE(OSEnvironment::putEnv(variable), 0);
    EXPECT_EQ(OSEnvironment::getErrorCode(), static_cast<std::uint32_t>(ENOMEM));
}

TEST_F(EnvironmentTest, WholeEnvironmentIsADictionaryInItsOrder) {
    char first[] = "B=1", second[] = "A=2=3", again[] = "B=4", none[] = "C", empty[] = "D=";
    char *values[] = {first, second, again, none, empty, nullptr};
    char **const saved = environ;
    environ = values;
    const std::string whole = describe(NSDictionary::dictionaryWithEnvironment());
    const std::string current = describe(NSProcessInfo::processInfo()->environment());
    environ = nullptr;
    const std::string cleared = describe(NSDictionary::initWithEnvironment().get());
    environ = saved;
    EXPECT_EQ(whole + current, "{B = 1; A = 2=3; D = ; }{B = 1; A = 2=3; D = ; }");
    EXPECT_EQ(cleared, "{}");
}

// Lines of any kind and length are compared with a model in fuzz/EncodedEnvironment.cpp.
TEST_F(EnvironmentTest, EncodedOneIsReadUpToAnEmptyLine) {
    const char *const rows[][3] = {{"\nA=1\n", "{}", "A=1\n"},
                                   {"A=1\nB=x=y\n\nrest", "{A = 1; B = x=y; }", "rest"}};
    for (const auto &[bytes, expected, rest] : rows) {
        const auto file = fileWith(bytes);
        EXPECT_EQ(describe(NSDictionary::dictionaryWithEncodedEnvironmentFromFile(file.get())), expected);
        char left[16] = "";
        EXPECT_EQ(std::string(left, std::fread(left, 1, sizeof left, file.get())), rest);
    }
}

TEST_F(EnvironmentTest, MalformedOnesAreErrors) {
    const std::pair<std::string, const char *> rows[] = {
        {"A=1\nB\n", "2 \"=\""}, {"A=" + std::string(8191, 'x'), "1 a line of at most 8192 bytes"}};
    for (const auto &[bytes, values] : rows) {
        const auto file = fileWith(bytes);
        EXPECT_ERROR(
            900021, values,
            EXPECT_EQ(NSMutableDictionary::dictionaryWithEncodedEnvironmentFromFile(file.get()), nullptr));
    }
    const auto file = fileWith("A=1\n");
    const Fault broken(Call::fgets, 0, 1, EIO);
    EXPECT_ERROR(100023, "<unknown> Input/output error",
                 EXPECT_EQ(NSDictionary::initWithEncodedEnvironmentFromFile(file.get()), nullptr));
    EXPECT_EQ(describe(NSDictionary::dictionaryWithEncodedEnvironmentFromFile(file.get())), "{A = 1; }");
}
