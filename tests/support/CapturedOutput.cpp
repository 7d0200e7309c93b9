#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <filesystem>

CapturedOutput::CapturedOutput(int descriptor) : descriptor_(descriptor) {
    std::fflush(nullptr);
    std::string name = std::filesystem::temp_directory_path() / "capturedXXXXXX";
    caught_ = ::mkostemp(name.data(), O_APPEND | O_CLOEXEC);
    ::unlink(name.c_str());
    original_ = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    if (caught_ < 0 || ::dup2(caught_, descriptor) < 0)
        ADD_FAILURE() << "descriptor " << descriptor << " can't be caught";
}

CapturedOutput::~CapturedOutput() {
    end();
    ::close(caught_);
}

std::string CapturedOutput::text() {
    std::fflush(nullptr);
    std::string text;
    char buffer[4096];
    ssize_t length;
    while ((length = ::pread(caught_, buffer, sizeof buffer, read_)) > 0) {
        text.append(buffer, static_cast<std::size_t>(length));
        read_ += length;
    }
    return text;
}

std::string CapturedOutput::end() {
    const std::string caught = text();
    if (original_ >= 0) {
        ::dup2(original_, descriptor_);
        ::close(original_);
        original_ = -1;
    }
    return caught;
}
