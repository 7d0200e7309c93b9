#include "Watching.h"

#include "../Files.h"

namespace publish::serving {

Watch::Watch(NSString *directory, NSString *log) {
    if (log)
        log_ = NSFileManager::defaultManager()->fileAttributesAtPath(log, /*traverseLink=*/YES);
    states_->setObjectForKey(stateOf(directory), directory);
}

// Whatever its name is by now.
bool Watch::isLog(NSDictionary *attributes) const {
    return log_ && attributes && attributes->fileSystemFileNumber() == log_->fileSystemFileNumber() &&
           attributes->fileSystemNumber() == log_->fileSystemNumber();
}

bool Watch::add(NSString *path) {
    const std::string place = realPath(path);
    for (const auto &[watched, state] : *states_)
        if (place.starts_with(realPath(static_cast<NSString *>(watched))))
            return false;
    states_->setObjectForKey(NSString::string(), path);
    return true;
}

void Watch::addLinkedFrom(NSString *directory) {
    NSString *const place = NSString::stringWith(realPath(directory));
    NSDirectoryEnumerator *const paths = NSFileManager::defaultManager()->enumeratorAtPath(place);
    while (id path = paths ? paths->nextObject() : nullptr) {
        const NSAutoreleasePool pool;
        NSDictionary *const attributes = paths->fileAttributes();
        if (!attributes || !attributes->fileType()->isEqual(NSFileTypeSymbolicLink))
            continue;
        NSString *const link = place->stringByAppendingPathComponent(path->stringValue());
        if (OSFilePath::directoryExistsAtPath(link) && add(link))
            addLinkedFrom(link);
    }
}

// A digest of the list, so that a large site costs no memory.
NSString *Watch::stateOf(NSString *path) const {
    NSFileManager *const files = NSFileManager::defaultManager();
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    const auto note = [this, digest](id name, NSDictionary *attributes) {
        if (isLog(attributes))
            return;
        NSDate *const modified = attributes ? attributes->fileModificationDate() : nullptr;
        digest->writeFormat("%@ %llu %llu %u %.6f\n"_ns, name, attributes ? attributes->fileSize() : 0,
                            attributes ? attributes->fileSystemFileNumber() : 0,
                            attributes ? attributes->filePosixPermissions() : 0,
                            modified ? modified->timeIntervalSince1970() : 0);
    };
    NSString *const place = NSString::stringWith(realPath(path));
    note(place, files->fileAttributesAtPath(path, /*traverseLink=*/YES));
    NSDirectoryEnumerator *const paths = files->enumeratorAtPath(place);
    while (id below = paths ? paths->nextObject() : nullptr) {
        const NSAutoreleasePool pool;
        NSDictionary *const attributes = paths->fileAttributes();
        note(below, attributes);
        if (attributes && attributes->fileType()->isEqual(NSFileTypeSymbolicLink))
            note(below,
                 files->fileAttributesAtPath(place->stringByAppendingPathComponent(below->stringValue()),
                                             /*traverseLink=*/YES));
    }
    return digest->md5Hash();
}

bool Watch::hasChanged() {
    const NSAutoreleasePool pool;
    bool isOther = false;
    for (id element : *states_->allKeys()) {
        auto *path = static_cast<NSString *>(element);
        NSString *const now = stateOf(path);
        isOther |= !now->isEqual(states_->objectForKey(path));
        states_->setObjectForKey(now, path);
    }
    return isOther;
}

} // namespace publish::serving
