#include "Watching.h"

namespace publish::serving {

// A digest of the list, so that a large site costs no memory.
NSString *Watch::state() const {
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    NSDirectoryEnumerator *const paths = NSFileManager::defaultManager()->enumeratorAtPath(directory_);
    while (id path = paths ? paths->nextObject() : nullptr) {
        const NSAutoreleasePool pool;
        NSDictionary *const attributes = paths->fileAttributes();
        NSDate *const modified = attributes ? attributes->fileModificationDate() : nullptr;
        digest->writeFormat("%@ %llu %llu %.6f\n"_ns, path, attributes ? attributes->fileSize() : 0,
                            attributes ? attributes->fileSystemFileNumber() : 0,
                            modified ? modified->timeIntervalSince1970() : 0);
    }
    return digest->md5Hash();
}

bool Watch::hasChanged() {
    const NSAutoreleasePool pool;
    NSString *const now = state();
    const bool isOther = !now->isEqualToString(state_);
    state_ = now;
    return isOther;
}

} // namespace publish::serving
