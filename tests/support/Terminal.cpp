#include "support/Terminal.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

Terminal::Terminal(const std::function<void()> &work) {
    std::fflush(nullptr);
    process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ < 0)
        ADD_FAILURE() << "there is no terminal";
    if (process_ != 0)
        return;
    termios mode{};
    ::tcgetattr(STDIN_FILENO, &mode);
    mode.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    mode.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
    ::tcsetattr(STDIN_FILENO, TCSANOW, &mode);
    try {
        work();
    } catch (...) {
        ::_exit(1); // not into the test of the parent
    }
    std::fflush(nullptr);
    ::_exit(0);
}

Terminal::~Terminal() {
    end();
}

bool Terminal::readMore() {
    char buffer[4096];
    const ssize_t length = ::read(terminal_, buffer, sizeof buffer); // fails when the program has ended
    if (length > 0)
        written_.append(buffer, static_cast<std::size_t>(length));
    return length > 0;
}

bool Terminal::answer(const std::string &text, const std::string &answer) {
    std::size_t found;
    while ((found = written_.find(text, seen_)) == std::string::npos)
        if (!readMore())
            return false;
    seen_ = found + text.size();
    return ::write(terminal_, answer.data(), answer.size()) == static_cast<ssize_t>(answer.size());
}

std::string Terminal::end() {
    if (process_ > 0) {
        // A read may fail while the last of what a program wrote is still on its way.
        while (readMore() || (::usleep(1000), readMore())) {
        }
        ::close(terminal_);
        int status = 0;
        EXPECT_EQ(::waitpid(process_, &status, 0), process_);
        EXPECT_EQ(status, 0);
        process_ = -1;
    }
    return written_;
}

std::vector<std::string> screensOf(const std::string &text) {
    std::vector<std::string> screens;
    std::string line;
    std::size_t column = 0;
    for (const char character : text + "\r") {
        if (character == '\r' || character == '\n') {
            screens.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
            column = 0;
            if (character == '\n')
                line.clear();
            continue;
        }
        line.resize(std::max(line.size(), column + 1), ' ');
        line[column++] = character;
    }
    return screens;
}
