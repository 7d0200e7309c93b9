// A target that writes to its filter.
#ifndef QBFOUNDATION_TESTS_SUPPORT_ECHOINGTARGET_H
#define QBFOUNDATION_TESTS_SUPPORT_ECHOINGTARGET_H

#include <QBFoundation/QBOutputStream.h>

#include <string>
#include <string_view>
#include <utility>

/// Collects what it gets, and writes `echoed` to `echo`, once.
struct EchoingTarget : QBOutputStream {
    void _writeBuffer(const void *buffer, std::uint32_t length) override {
        bytes.append(static_cast<const char *>(buffer), length);
        if (QBOutputStream *const once = std::exchange(echo, nullptr))
            once->writeBuffer(echoed.data(), static_cast<std::uint32_t>(echoed.size()));
    }

    QBOutputStream *echo = nullptr;
    std::string_view echoed = "(e)";
    std::string bytes;
};

#endif
