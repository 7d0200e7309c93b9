#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/Send.h>

#include "System/Faults.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <cerrno>

namespace {

class NSDataFileTest : public PoolFixture {
protected:
    TemporaryDirectory directory_;
};

} // namespace

TEST_F(NSDataFileTest, AnyBytesAreWrittenAndReadBack) {
    const std::string large(300'000, '\xFF');
    for (const std::string &bytes : {std::string(), std::string("a\0\xFF", 3), large})
        for (const BOOL atomically : {NO, YES}) {
            NSString *const path = directory_.string("new/file");
            NSData *const data =
                NSData::dataWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
            EXPECT_TRUE(data->writeToFile(path, atomically));
            EXPECT_EQ(directory_.read("new/file"), bytes);
            EXPECT_TRUE(data->isEqual(NSData::dataWithContentsOfFile(path)));
            EXPECT_TRUE(data->isEqual(NSMutableData::dataWithContentsOfFile(path)));
        }
    EXPECT_EQ(directory_.names("new"), std::vector<std::string>{"file"});
    const id made =
        send<id>(NSMutableData::cls(), "dataWithContentsOfFile:"_sel, directory_.string("new/file"));
    EXPECT_TRUE(made->isMemberOfClass(NSMutableData::cls()));
}

TEST_F(NSDataFileTest, FailuresAreErrors) {
    directory_.write("file", "old");
    NSString *const path = directory_.string("file");
    NSData *const data = NSData::dataWithBytes("new", 3);
    {
        ErrorExpectation error(100039);
        EXPECT_EQ(NSData::dataWithContentsOfFile(directory_.string("missing")), nullptr);
        EXPECT_EQ(error.values(), directory_ / "missing");
    }
    for (const qb::sys::Call call : {qb::sys::Call::open, qb::sys::Call::fstat, qb::sys::Call::read}) {
        qb::sys::Fault fault(call, /*skip=*/0, /*times=*/1, EIO);
        ErrorExpectation error(100023);
        EXPECT_EQ(NSData::dataWithContentsOfFile(path), nullptr);
        EXPECT_EQ(error.values(), directory_ / "file" + " Input/output error");
    }
    {
        qb::sys::Fault fault(qb::sys::Call::fwrite, /*skip=*/0, /*times=*/1, ENOSPC);
        ErrorExpectation error(100024);
        EXPECT_FALSE(data->writeToFile(path, /*atomically=*/YES));
    }
    {
        ErrorExpectation error(100024);
        EXPECT_FALSE(data->writeToFile(directory_.string("."), /*atomically=*/NO));
    }
    EXPECT_EQ(directory_.read("file"), "old");
    EXPECT_REASON(NSData::dataWithContentsOfFile(nullptr),
                  "NSData initWithContentsOfFile: must have a path that is not nil.");
    EXPECT_REASON(data->writeToFile(nullptr, NO),
                  "NSData writeToFile:atomically: must have a path that is not nil.");
}
