#include "support/PoolFixture.h"

using OSObjectTest = PoolFixture;

TEST_F(OSObjectTest, ClassAndObjectsTellTheLastSystemError) {
    const Ref<OSObject> object = OSObject::init();
    for (id receiver : {static_cast<id>(OSProcess::cls()), static_cast<id>(object.get())}) {
        errno = EACCES;
        EXPECT_EQ(send<std::uint32_t>(receiver, "getErrorCode"_sel), static_cast<std::uint32_t>(EACCES));
        EXPECT_STREQ(send<const char *>(receiver, "errorDescription"_sel), "Permission denied");
    }
    EXPECT_EQ(OSObject::_getWindowsErrorCode(), 0u);
}

TEST_F(OSObjectTest, ObjectsAskTheirClass) {
    struct Remote : ClientClass<Remote, OSObject, "Remote"> {
        static Operations operations() { return {qb::classMethod<"getErrorCode">(&Remote::getErrorCode)}; }
        static std::uint32_t getErrorCode() { return 7; } // of another system
    };
    const auto object = Ref<Remote>::adopt(new Remote);
    EXPECT_EQ(send<std::uint32_t>(object.get(), "getErrorCode"_sel), 7u);
}

TEST_F(OSObjectTest, TheProcessKnowsItsSize) {
    EXPECT_EQ(OSProcess::getCurrentPid(), ::getpid());
    EXPECT_EQ(OSProcess::getDataSegmentSize(), reinterpret_cast<std::intptr_t>(::sbrk(0)));
}
