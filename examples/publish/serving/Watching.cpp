#include "Watching.h"

#include "../Files.h"

namespace publish::serving {

Watch::Watch(NSString *directory, NSString *log) {
    if (log)
        log_ = NSFileManager::defaultManager()->fileAttributesAtPath(log, /*traverseLink=*/YES);
    const std::string place = realPath(directory);
    places_.insert(place);
    states_->setObjectForKey(stateOf(directory, place), directory);
}

// Whatever its name is by now.
bool Watch::isLog(NSDictionary *attributes) const {
    return log_ && attributes && attributes->fileSystemFileNumber() == log_->fileSystemFileNumber() &&
           attributes->fileSystemNumber() == log_->fileSystemNumber();
}

// Whether it is the place of something watched, or below one.
bool Watch::isWatched(std::string_view place) const {
    for (std::size_t end = place.find('/'); end != std::string_view::npos; end = place.find('/', end + 1))
        if (places_.contains(place.substr(0, end + 1)))
            return true;
    return false;
}

bool Watch::add(NSString *path) {
    const std::string place = realPath(path);
    if (isWatched(place))
        return false;
    places_.insert(place);
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
NSString *Watch::stateOf(NSString *path, const std::string &real) const {
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
    NSString *const place = NSString::stringWith(real);
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
    places_.clear();
    for (id element : *states_->allKeys()) {
        auto *path = static_cast<NSString *>(element);
        const std::string place = realPath(path);
        places_.insert(place);
        NSString *const now = stateOf(path, place);
        isOther |= !now->isEqual(states_->objectForKey(path));
        states_->setObjectForKey(now, path);
    }
    return isOther;
}

} // namespace publish::serving
