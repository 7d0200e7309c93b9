// A terminal, and a process of the test's on it.
#ifndef QBFOUNDATION_TESTS_SUPPORT_TERMINAL_H
#define QBFOUNDATION_TESTS_SUPPORT_TERMINAL_H

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

/// Runs `work` in a child process whose three standard streams are a terminal. What is typed is not echoed.
class Terminal {
public:
    explicit Terminal(const std::function<void()> &work);
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    /// The end of input, at the beginning of a line.
    static constexpr const char *kEnd = "\x04";

    /// Waits until the program has written `text` behind what was waited for before, then types `answer`.
    /// Returns false when the program ends without it.
    bool answer(const std::string &text, const std::string &answer);

    /// Waits until the program ends; returns all that it has written, with "\n" as line end.
    std::string end();

private:
    bool readMore();

    int terminal_ = -1;
    pid_t process_ = -1;
    std::string written_;
    std::size_t seen_ = 0;
};

/// What a screen shows at each carriage return and line end of the text, and at its end: lines without blanks
/// at their ends.
std::vector<std::string> screensOf(const std::string &text);

#endif
