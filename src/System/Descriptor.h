// Ownership of descriptors.
#ifndef QBFOUNDATION_SYSTEM_DESCRIPTOR_H
#define QBFOUNDATION_SYSTEM_DESCRIPTOR_H

#include "Files.h"

#include <cerrno>
#include <utility>

namespace qb::sys {

/// Owns an open descriptor, or none (-1), and closes it at the end. errno stays as it was then.
class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    Descriptor(Descriptor &&other) noexcept : descriptor_(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Descriptor() {
        const int error = errno;
        close();
        errno = error;
    }

    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    int get() const noexcept { return descriptor_; }
    /// Gives the descriptor to the caller.
    int release() noexcept { return std::exchange(descriptor_, -1); }
    /// Closes now, to see whether that fails; 0 without a descriptor.
    int close() noexcept { return descriptor_ >= 0 ? sys::close(release()) : 0; }

private:
    int descriptor_;
};

} // namespace qb::sys

#endif
