#include "Watching.h"

#include "../Files.h"

namespace publish::serving {

void Watch::add(NSString *directory) {
    const std::string path = realPath(directory);
    for (const auto &[watched, state] : *states_)
        if (path.starts_with(realPath(static_cast<NSString *>(watched))))
            return;
    states_->setObjectForKey(NSString::string(), directory);
}

// A digest of the list, so that a large site costs no memory.
NSString *Watch::stateOf(NSString *directory) {
    NSFileManager *const files = NSFileManager::defaultManager();
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    const auto note = [digest](id path, NSDictionary *attributes) {
        NSDate *const modified = attributes ? attributes->fileModificationDate() : nullptr;
        digest->writeFormat("%@ %llu %llu %.6f\n"_ns, path, attributes ? attributes->fileSize() : 0,
                            attributes ? attributes->fileSystemFileNumber() : 0,
                            modified ? modified->timeIntervalSince1970() : 0);
    };
    NSString *const place = NSString::stringWith(realPath(directory));
    digest->writeObject(place);
    NSDirectoryEnumerator *const paths = files->enumeratorAtPath(place);
    while (id path = paths ? paths->nextObject() : nullptr) {
        const NSAutoreleasePool pool;
        NSDictionary *const attributes = paths->fileAttributes();
        note(path, attributes);
        if (attributes && attributes->fileType()->isEqual(NSFileTypeSymbolicLink))
            note(path, files->fileAttributesAtPath(place->stringByAppendingPathComponent(path->stringValue()),
                                                   /*traverseLink=*/YES));
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
