// What a test, or a process that it starts, writes to standard error or another descriptor.
#ifndef QBFOUNDATION_TESTS_SUPPORT_CAPTUREDOUTPUT_H
#define QBFOUNDATION_TESTS_SUPPORT_CAPTUREDOUTPUT_H

#include <string>

#include <unistd.h>

/// Catches in its scope whatever reaches a descriptor; children inherit the catch.
///
/// With standard output also the messages of failed expectations are caught, so expect after its end.
class CapturedOutput {
public:
    explicit CapturedOutput(int descriptor = STDERR_FILENO);
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput &) = delete;
    CapturedOutput &operator=(const CapturedOutput &) = delete;

    /// Returns what was written since the beginning, or since the last call; C streams are flushed first.
    std::string text();

    /// Puts the descriptor back now and returns what `text` returns.
    std::string end();

private:
    const int descriptor_;
    int original_; // -1 when it was put back
    int caught_;   // a file without a name, which takes any amount
    off_t read_ = 0;
};

#endif
