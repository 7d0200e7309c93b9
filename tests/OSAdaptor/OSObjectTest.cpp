#include <QBFoundation/OSAdaptor/OSObject.h>

#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/Runtime/Send.h>

#include "support/PoolFixture.h"

#include <cerrno>
#include <unistd.h>

using OSObjectTest = PoolFixture;

TEST_F(OSObjectTest, ClassAndObjectsTellTheLastSystemError) {
    const Ref<OSObject> object = OSObject::init();
    for (id receiver : {static_cast<id>(OSProcess::cls()), static_cast<id>(object.get())}) {
        const SEL code = "getErrorCode"_sel;
        const SEL text = "errorDescription"_sel;
        errno = ENOENT;
        EXPECT_EQ(send<std::uint32_t>(receiver, code), static_cast<std::uint32_t>(ENOENT));
        errno = EACCES;
        EXPECT_STREQ(send<const char *>(receiver, text), "Permission denied");
    }
    EXPECT_EQ(OSObject::_getWindowsErrorCode(), 0u);
}

TEST_F(OSObjectTest, TheProcessKnowsItself) {
    EXPECT_EQ(OSProcess::getCurrentPid(), ::getpid());
    EXPECT_EQ(OSProcess::getDataSegmentSize(), reinterpret_cast<std::intptr_t>(::sbrk(0)));
}
