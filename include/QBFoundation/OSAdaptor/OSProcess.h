// This process and others.
#ifndef QBFOUNDATION_OSADAPTOR_OSPROCESS_H
#define QBFOUNDATION_OSADAPTOR_OSPROCESS_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSObject.h>
#include <QBFoundation/OSAdaptor/OSPipe.h>

#include <cstdint>

/// A program in a process of its own, and what concerns this process itself.
///
/// A program is a command, looked up on the search path, and its arguments; its environment is this process's
/// with the variables of the dictionary added or replaced. Arguments, names and values are the objects'
/// `stringValue`. A handle points to a descriptor that becomes one of the standard streams, in the order
/// input, output, error, so that one which is a standard stream itself means what that is by then; it is
/// closed in the new process if it is none. A null handle leaves the stream as it is here. The program gets
/// no other descriptor, default actions for all signals, and blocks none.
///
/// What goes wrong in the new process before the program runs, be it that there is no such program, ends it
/// with exit status 17 and a line for the category "alert": an argument with a NUL in it is such a failure,
/// and so is a handle that is no descriptor. Waiting then raises 100228.
class QB_EXPORT OSProcess : public OSObject {
public:
    OSProcess() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Starting ---

    /// Starts a program as a child of this process, without a copy of its memory.
    /// Raises 100164 (command or "<nil>", system text) when there can be no more processes, and returns nil.
    static Ref<OSProcess> initWithCommand(NSString *command, NSArray *args, NSDictionary *env) {
        return qb::init<OSProcess>(&OSProcess::setUpWithCommand, command, args, env);
    }
    static Ref<OSProcess> initWithCommand(NSString *command, NSArray *args, NSDictionary *env,
                                          const std::int32_t *stdinHandle, const std::int32_t *stdoutHandle,
                                          const std::int32_t *stderrHandle) {
        return qb::init<OSProcess>(&OSProcess::setUpWithCommandAndHandles, command, args, env, stdinHandle,
                                   stdoutHandle, stderrHandle);
    }
    static OSProcess *subProcessWithCommand(NSString *command, NSArray *args, NSDictionary *env) {
        return initWithCommand(command, args, env).autorelease();
    }
    static OSProcess *subProcessWithCommand(NSString *command, NSArray *args, NSDictionary *env,
                                            const std::int32_t *stdinHandle, const std::int32_t *stdoutHandle,
                                            const std::int32_t *stderrHandle) {
        return initWithCommand(command, args, env, stdinHandle, stdoutHandle, stderrHandle).autorelease();
    }

    // --- Detached programs ---
    //
    // They are no children of this process, which can't wait for them, and need not.

    /// `createSubProcessWithPipe:doesRead:withCommand:withArgs:withEnv:stdinHandle:stdoutHandle:stderrHandle:`
    ///
    /// Starts a detached program that reads from the pipe (`doesRead`) or writes to it. The pipe's other end
    /// is this process's, where the program's end is closed.
    ///
    /// The handle for the stream that is the pipe is ignored. Returns YES; NO, with an `errno`, when there
    /// can be no more processes. When that is found out only by the process in between, which is to start the
    /// program and to end then, NO is returned there, in a copy of this process, which has to end itself and
    /// is waited for.
    static BOOL createSubProcessWithPipe(OSPipe *pipe, BOOL doesRead, NSString *command, NSArray *args,
                                         NSDictionary *env, const std::int32_t *stdinHandle,
                                         const std::int32_t *stdoutHandle, const std::int32_t *stderrHandle);
    /// As `createSubProcessWithPipe`, for a program that reads
    /// (`createSubProcessReadingFromPipe:withCommand:withArgs:withEnv:stdoutHandle:stderrHandle:`).
    static BOOL createSubProcessReadingFromPipe(OSPipe *pipe, NSString *command, NSArray *args,
                                                NSDictionary *env) {
        return createSubProcessReadingFromPipe(pipe, command, args, env, nullptr, nullptr);
    }
    static BOOL createSubProcessReadingFromPipe(OSPipe *pipe, NSString *command, NSArray *args,
                                                NSDictionary *env, const std::int32_t *stdoutHandle,
                                                const std::int32_t *stderrHandle) {
        return createSubProcessWithPipe(pipe, /*doesRead=*/YES, command, args, env, nullptr, stdoutHandle,
                                        stderrHandle);
    }
    /// As `createSubProcessWithPipe`, for a program that writes
    /// (`createSubProcessWritingToPipe:withCommand:withArgs:withEnv:stdinHandle:stderrHandle:`).
    static BOOL createSubProcessWritingToPipe(OSPipe *pipe, NSString *command, NSArray *args,
                                              NSDictionary *env) {
        return createSubProcessWritingToPipe(pipe, command, args, env, nullptr, nullptr);
    }
    static BOOL createSubProcessWritingToPipe(OSPipe *pipe, NSString *command, NSArray *args,
                                              NSDictionary *env, const std::int32_t *stdinHandle,
                                              const std::int32_t *stderrHandle) {
        return createSubProcessWithPipe(pipe, /*doesRead=*/NO, command, args, env, stdinHandle, nullptr,
                                        stderrHandle);
    }
    /// `createCoprocessWithPipeForRead:pipeForWrite:withCommand:withArgs:withEnv:stderrHandle:`
    ///
    /// Starts a detached program whose output comes through the first pipe and whose input goes through the
    /// second. The program's ends are closed here.
    /// Raises 100164 (command or "<nil>", system text) when there can be no more processes.
    static void createCoprocessWithPipeForRead(OSPipe *pipe, OSPipe *pipeForWrite, NSString *command,
                                               NSArray *args, NSDictionary *env,
                                               const std::int32_t *stderrHandle);

    // --- Running to the end ---

    /// Runs a program and waits for it.
    ///
    /// What it writes to its standard error is read only when it has ended, so that it must not be more than
    /// a pipe holds (64 KiB). What others still write there that it has left behind, a filter of its error
    /// output, say, is waited for no longer than half a second. Being killed counts as success.
    /// Raises 100227 (command, exit code, error output) when the exit code is not 0, and what starting and
    /// waiting raise. Errors that are pending before are kept.
    static void runExternalCmd(NSString *command, NSArray *args, NSDictionary *env);

    // --- Waiting ---

    /// Returns the process's id.
    virtual std::int32_t pid() const { return processHandle_; }
    /// Waits for the child's end (`doHang`), or looks whether it has come; stores the exit code, 0 when a
    /// signal ended it, unless `exitCode` is null.
    ///
    /// Returns 1 when it has ended, 2 while it runs, -1 after an error. Raises 100228 when its exit code is
    /// 17, and 100234 (id, system text) when it is no child, or none any more.
    virtual std::int32_t waitForProcessDoHang(BOOL doHang, std::int32_t *exitCode);
    std::int32_t waitForProcessDoHang(BOOL doHang) { return waitForProcessDoHang(doHang, nullptr); }
    /// Waits for one or all of the processes, looking ten times a second. All children of this process that
    /// end meanwhile are forgotten, also those that are not in the array.
    ///
    /// Returns 1 when they have ended, or there are none to wait for; 2 when more than `timeout` whole
    /// seconds have passed; -1 when there are no more children.
    static std::int32_t waitForProcesses(NSArray *processes, std::int32_t timeout, BOOL waitForAll);

    // --- Signals to others ---

    /// Whether there is a process of that id that this one may send signals to; one that has ended and was
    /// not waited for counts. Ends this process with exit status 17 when the system won't tell.
    virtual BOOL isRunning();
    /// Raises 100232 (id, system text) when SIGTERM can't be sent.
    virtual void sendTermSignal();
    /// Raises 100233 (id, system text) when SIGKILL can't be sent.
    virtual void sendKillSignal();

    // --- Signals to this process ---
    //
    // Handlers run where the signal finds the program, be it in the middle of an allocation, so that they may
    // do little more than set a flag; `errno` is kept for them. Reads without a time-out go on behind
    // them, so that a program which waits for long has one, as in `OSSocket selectSockets:…`. One write of
    // `OSPipe` or one `sendBuffer:` that waits in its middle ends behind them with what was written so far.

    /// Lets SIGTERM, SIGINT and SIGQUIT call `handler` with the signal's number. When it answers YES, and
    /// without a handler, the process ends with exit status 0: at once, so that what streams have buffered is
    /// lost and no exit function runs. A program that wants those sets a flag and answers NO.
    ///
    /// Another of these signals that comes while the handler runs is dropped; the same one is held back, and
    /// calls the handler afterwards. Raises the fatal error 130004 (signal's name,
    /// system text) when that can't be installed; nothing is then.
    static void registerTerminationHandler(BOOL (*handler)(int));
    /// Lets SIGUSR1 and SIGUSR2 call `handler` with the signal's number; otherwise as
    /// `registerTerminationHandler`.
    static void registerUserSignalHandler(void (*handler)(int));
    /// Ends the process with exit status 17 after so many seconds (0: never), unless a later call,
    /// `cancelSelfDestruction` or `detachAndChdirTo:` changes that.
    ///
    /// A line for the category "alert" tells of it. To write it is more than a signal handler may do; if the
    /// process is in no state for it, the line is lost, and two seconds later the process ends all the same.
    /// Raises the fatal error 130004 (signal's name, system text) when the handler can't be installed.
    static void selfDestructionWithTimeout(std::uint32_t seconds);
    static void cancelSelfDestruction();

    // --- This process ---

    /// Returns the id of this process.
    static std::int32_t getCurrentPid();
    /// Returns the address of the end of the data segment, from which its growth can be seen.
    static std::int64_t getDataSegmentSize();
    /// Sleeps so many seconds, at most 3600; not at all when they are below 1.
    static void sleep(std::int32_t seconds);
    /// Logs the message for the category "alert" and ends the process in good order with exit status 17.
    [[noreturn]] static void abortWithMessage(NSString *message);
    /// Makes this process one in the background: its parent goes on as if it had ended well, and it has a
    /// session of its own, that working directory, and /dev/null for its standard streams. It has another id,
    /// no time set for its self-destruction, and no children that it could wait for.
    ///
    /// Ends the process with exit status 17 and a line for the category "alert" when there can be no more
    /// processes, or no /dev/null. Raises 100196 when the directory can't be the working directory.
    static void detachAndChdirTo(NSString *directory);

    // --- Comparing ---

    /// Whether the other object is a process with the same id.
    BOOL isEqual(id other) const override;
    std::uint32_t hash() const override { return static_cast<std::uint32_t>(processHandle_); }

protected:
    /// The initialiser `initWithCommand:withArgs:withEnv:`.
    virtual BOOL setUpWithCommand(NSString *command, NSArray *args, NSDictionary *env);
    /// The initialiser `initWithCommand:withArgs:withEnv:stdinHandle:stdoutHandle:stderrHandle:`.
    virtual BOOL setUpWithCommandAndHandles(NSString *command, NSArray *args, NSDictionary *env,
                                            const std::int32_t *stdinHandle, const std::int32_t *stdoutHandle,
                                            const std::int32_t *stderrHandle);

private:
    bool signal(int number) const;

    std::int32_t processHandle_ = 0; // 0 only in an object that was never set up
    std::int32_t starter_ = 0;       // the process that has started it, of which this may be a copy
    bool isChild_ = false;           // started, and not waited for to its end
};

#endif
