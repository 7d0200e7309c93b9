// What other programs say.
#ifndef QBFOUNDATION_TESTS_SUPPORT_COMMANDOUTPUT_H
#define QBFOUNDATION_TESTS_SUPPORT_COMMANDOUTPUT_H

#include <cstdio>
#include <string>

/// Returns what the shell's command writes on standard output, or nothing when it fails.
inline std::string outputOf(const std::string &command) {
    std::FILE *const output = ::popen(command.c_str(), "r");
    std::string text;
    for (int byte; output && (byte = std::fgetc(output)) != EOF;)
        text += static_cast<char>(byte);
    return output && ::pclose(output) == 0 ? text : "";
}

#endif
