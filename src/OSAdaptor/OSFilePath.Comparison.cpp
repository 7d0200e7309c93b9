// Comparison of files.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>

#include "OSFilePath.Support.h"
#include "System/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace {

using qb::files::Buffer;
using qb::files::kBlockSize;
using qb::files::raiseSystemError;
using qb::files::trace;
namespace sys = qb::sys;

/// One of the two files, read from its start.
class ComparedFile {
public:
    explicit ComparedFile(NSString *path) : path_(path) {}

    // Returns whether the file exists; false also with an error raised.
    bool find() {
        const char *const name = qb::files::systemPath(path_);
        if (name && sys::stat(name, &status_) == 0)
            return true;
        if (errno != ENOENT)
            raiseSystemError(__LINE__, qb::kErrorCannotStat, path_);
        return false;
    }
    bool isDirectory() const { return S_ISDIR(status_.st_mode); }
    std::int64_t size() const { return status_.st_size; }

    bool open(std::size_t blockSize, const char *traceFormat) {
        // A pipe without anyone at its other end must not keep us waiting.
        file_ = sys::Descriptor(sys::open(path_->cString(), O_RDONLY | O_NONBLOCK));
        if (!file_) {
            raiseSystemError(__LINE__, qb::kErrorCannotRead, path_);
            return false;
        }
        trace(4, __LINE__, traceFormat, file_.get(), qb::files::shown(path_));
        block_.reset(qb::files::allocate(blockSize));
        return block_ != nullptr;
    }

    // Reads the next block, shorter at the file's end only. Returns false with an error raised.
    bool read(std::size_t length) {
        count_ = sys::readAll(file_.get(), block_.get(), length);
        if (count_ < 0)
            raiseSystemError(__LINE__, qb::kErrorCannotRead, path_);
        return count_ >= 0;
    }
    std::string_view block() const { return {block_.get(), static_cast<std::size_t>(count_)}; }

private:
    NSString *path_;
    struct stat status_ {};
    sys::Descriptor file_;
    Buffer block_;
    ssize_t count_ = 0;
};

// Answers NO when an error is raised.
BOOL contentsDiffer(ComparedFile &one, ComparedFile &other) {
    const auto block = static_cast<std::size_t>(std::min<std::int64_t>(one.size(), kBlockSize));
    if (!one.open(block, "%s:%d: f1: 0x%08x (%s)") || !other.open(block, "%s:%d: f2: 0x%08x (%s)"))
        return NO;
    for (std::int64_t left = one.size(); left > 0;) {
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(left, kBlockSize));
        if (!one.read(wanted) || !other.read(wanted))
            return NO;
        if (one.block() != other.block())
            return YES;
        if (one.block().empty()) // both have become shorter meanwhile
            return NO;
        left -= static_cast<std::int64_t>(one.block().size());
    }
    return NO;
}

// Answers NO when an error is pending.
BOOL filesDiffer(ComparedFile one, ComparedFile other) {
    const bool hasOne = one.find();
    if (qb::isErrorPending())
        return NO;
    const bool hasOther = other.find();
    if (qb::isErrorPending())
        return NO;
    if (!hasOne || !hasOther || one.isDirectory() || other.isDirectory() || one.size() != other.size())
        return YES;
    return contentsDiffer(one, other);
}

} // namespace

BOOL OSFilePath::fileAtPath(NSString *path, NSString *differsFromFileAtPath) {
    const BOOL differ = filesDiffer(ComparedFile(path), ComparedFile(differsFromFileAtPath));
    trace(4, __LINE__, differ ? "%s:%d: -->YES" : "%s:%d: -->NO");
    return differ;
}
