#include "support/PoolFixture.h"

#include <fstream>

using NSProcessInfoTest = PoolFixture;

TEST_F(NSProcessInfoTest, ArgumentsAndNameAreThoseOfTheProgram) {
    NSProcessInfo *info = NSProcessInfo::processInfo();
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    std::string joined;
    for (id argument : *info->arguments())
        (joined += describe(argument)).push_back('\0');
    EXPECT_EQ(joined, expected);
    EXPECT_EQ(info->processName()->view(), "qb_tests");
    info->setProcessName("other"_ns);
    EXPECT_EQ(info->processName()->view(), "other");
    info->setProcessName("qb_tests"_ns);
}

TEST_F(NSProcessInfoTest, ChildrenOfEveryKindHaveIdsOfTheirOwn) {
    const NSProcessInfo *const info = NSProcessInfo::processInfo();
    EXPECT_EQ(info->processIdentifier(), getpid());
    const pid_t child = ::_Fork(); // runs no handlers
    if (child == 0)
        ::_exit(info->processIdentifier() == getpid() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(NSProcessInfoTest, HostAndSystemAreNamedAndTheirFailuresHaveAnAnswer) {
    NSProcessInfo *info = NSProcessInfo::processInfo();
    char name[256];
    ASSERT_EQ(gethostname(name, sizeof name), 0);
    EXPECT_EQ(describe(info->operatingSystemName()), "Linux");
    EXPECT_EQ(info->hostName()->view(), name);
    Fault noName(Call::gethostname, 0, 0, ENAMETOOLONG);
    Fault noFile(Call::read, 0, 0, EIO);
    EXPECT_EQ(info->hostName()->view(), "localhost");
    EXPECT_EQ(info->operatingSystemVersionString()->view(), "");
}
