// Logger and debug printer for a test of its own.
#ifndef QBFOUNDATION_TESTS_SUPPORT_SERVICESFIXTURE_H
#define QBFOUNDATION_TESTS_SUPPORT_SERVICESFIXTURE_H

#include "support/CapturedOutput.h"
#include "support/DirectoryFixture.h"

#include <string>

/// A process as it is after `main` has begun: no loggers, no debug channels but "all", all settings at their
/// defaults. Afterwards it is so again.
class ServicesFixture : public DirectoryFixture {
protected:
    ServicesFixture() { reset(); }
    ~ServicesFixture() override { reset(); }

    /// Lets the library's traces on that channel pass, and on no other.
    static void activateChannel(const char *name);
    /// What `act` writes to standard error, with that channel active at that level; the beginnings of its
    /// traces, which name time, process, channel and level, are left out, and lines become "L":
    /// "src/QBPath:L(QBPath): -initWithCoder: -> enter".
    static std::string traced(const char *channel, int level, const std::function<void()> &act);

private:
    static void reset();
};

/// The log lines of the process, with "T" for each time and "P" for each process id: "[T] (P) [debug] text".
/// A line that does not begin like one of them stays as it is.
std::string logLines(const std::string &text, pid_t process = ::getpid());

/// The text with `by` in the place of whatever matches the regular expression.
std::string replaced(const std::string &text, const std::string &pattern, const std::string &by);

/// The address as the library's own lines show it.
std::string addressOf(const void *object);

/// How a child process has ended.
struct ChildEnd {
    pid_t process = -1;
    int status = -1; // its exit status; minus the signal that has killed it
    std::string standardError;
};

/// Runs `work` in a child process, which exits with 0 afterwards.
ChildEnd runInChild(const std::function<void()> &work);

#endif
