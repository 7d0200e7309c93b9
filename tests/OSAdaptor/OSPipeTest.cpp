#include "support/PoolFixture.h"

#include <fcntl.h>

using OSPipeTest = PoolFixture;

static bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

TEST_F(OSPipeTest, EndsAreClosedOnceAndTheirNumbersForgotten) {
    int ends[2];
    {
        const Ref<OSPipe> pipe = OSPipe::init();
        ends[0] = pipe->readHandle();
        ends[1] = pipe->writeHandle();
        const Fault signal(Call::close, 0, 1, EINTR); // closed all the same
        EXPECT_EQ(pipe->closeReadHandle(), 0);
        EXPECT_EQ(pipe->closeReadHandle(), 0);
        EXPECT_FALSE(isOpen(ends[0]));
        char byte;
        EXPECT_EQ(pipe->read(&byte, 1), -1);
        EXPECT_EQ(errno, EBADF);
    }
    EXPECT_FALSE(isOpen(ends[1]));
    const Fault none(Call::pipe, 0, 1, EMFILE);
    EXPECT_EQ(OSPipe::pipe(), nullptr);
    EXPECT_EQ(errno, EMFILE);
}

TEST_F(OSPipeTest, EndThatFailsToCloseCountsAsOpenAndIsNotClosedAgain) {
    OSPipe *const pipe = OSPipe::pipe();
    const int end = pipe->writeHandle();
    const Fault fault(Call::close, 0, 1, EIO);
    EXPECT_EQ(pipe->closeWriteHandle(), -1);
    EXPECT_EQ(errno, EIO);
    const int stranger = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(stranger, end);
    EXPECT_TRUE(pipe->_isWriteHandleOpen());
    EXPECT_EQ(pipe->closeWriteHandle(), -1);
    EXPECT_TRUE(isOpen(stranger));
    ::close(stranger);
}

TEST_F(OSPipeTest, TransfersAreWhatTheSystemAnswers) {
    OSPipe *const pipe = OSPipe::pipe();
    char text[8] = "";
    const Fault shortly(Call::write, 0, 1, sys::ShortTransfer{4});
    EXPECT_EQ(pipe->write("abcdef", 6), 4);
    EXPECT_EQ(pipe->read(text, 8), 4);
    EXPECT_STREQ(text, "abcd");
    for (const Call call : {Call::write, Call::read}) {
        const Fault signal(call, 0, 1, EINTR);
        EXPECT_EQ(call == Call::write ? pipe->write("a", 1) : pipe->read(text, 1), -1);
        EXPECT_EQ(errno, EINTR);
    }
    pipe->closeReadHandle();
    EXPECT_EQ(pipe->write("a", 1), -1); // and no signal
    EXPECT_EQ(errno, EPIPE);
}

TEST_F(OSPipeTest, SignalsThatTheCallerHoldsBackStayAsTheyWere) {
    sigset_t blocked, before, pending;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGPIPE);
    ::sigprocmask(SIG_BLOCK, &blocked, &before);
    OSPipe *const pipe = OSPipe::pipe();
    pipe->closeReadHandle();
    for (const int isPending : {0, 1}) {
        if (isPending)
            ::raise(SIGPIPE);
        EXPECT_EQ(pipe->write("a", 1), -1);
        ::sigpending(&pending);
        EXPECT_EQ(::sigismember(&pending, SIGPIPE), isPending);
    }
    const timespec atOnce{};
    ::sigtimedwait(&blocked, nullptr, &atOnce);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(OSPipeTest, ReaderThatGoesAmidAWriteIsToldByItsLengthAndNoSignal) {
    OSPipe *const pipe = OSPipe::pipe();
    const pid_t reader = ::fork();
    if (reader == 0) {
        pipe->closeWriteHandle();
        char byte;
        ::_exit(::read(pipe->readHandle(), &byte, 1) == 1 ? 0 : 1);
    }
    pipe->closeReadHandle();
    const std::string much(1'000'000, 'x'); // than the pipe holds
    const auto written = pipe->write(much.data(), 1'000'000);
    EXPECT_TRUE(written > 0 && written < 1'000'000) << written;
    EXPECT_EQ(::waitpid(reader, nullptr, 0), reader);
}

TEST_F(OSPipeTest, StreamsReadWriteCloseAndNeedAnOpenEnd) {
    OSPipe *const pipe = OSPipe::pipe();
    OSPipeInputStream *const source = pipe->getInputStream();
    OSPipeOutputStream *const target = pipe->getOutputStream();
    target->writeByte('\xff');
    target->writeFormat("%d"_ns, 17);
    EXPECT_EQ(source->readByte(), 255);
    char text[4] = "";
    EXPECT_EQ(source->readBuffer(text, 4), 2);
    EXPECT_STREQ(text, "17");
    target->close();
    target->writeByte('x'); // to nowhere
    EXPECT_FALSE(pipe->_isWriteHandleOpen());
    EXPECT_EQ(source->readByte(), -1);
    source->close();
    EXPECT_FALSE(pipe->_isReadHandleOpen());
    const auto count = pipe->retainCount();
    EXPECT_THROW(OSPipeInputStream::initWithPipe(pipe), InternalInconsistencyException);
    EXPECT_THROW(OSPipeOutputStream::initWithPipe(pipe), InternalInconsistencyException);
    EXPECT_EQ(pipe->retainCount(), count);
    EXPECT_THROW(send<id>(OSPipeOutputStream::cls(), "stream"_sel), InvalidUseOfMethodException);
}
