#include "Watching.h"

#include "../Files.h"

namespace publish::serving {

void Watch::add(NSString *directory) {
    const std::string path = realPath(directory);
    for (const auto &[watched, state] : *states_)
        if (path.starts_with(watched->stringValue()->view()))
            return;
    NSString *const key = NSString::stringWith(path);
    states_->setObjectForKey(stateOf(key), key);
}

// A digest of the list, so that a large site costs no memory.
NSString *Watch::stateOf(NSString *directory) {
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    NSDirectoryEnumerator *const paths = NSFileManager::defaultManager()->enumeratorAtPath(directory);
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
    bool isOther = false;
    for (id element : *states_->allKeys()) {
        auto *directory = static_cast<NSString *>(element);
        NSString *const now = stateOf(directory);
        isOther |= !now->isEqual(states_->objectForKey(directory));
        states_->setObjectForKey(now, directory);
    }
    return isOther;
}

} // namespace publish::serving
