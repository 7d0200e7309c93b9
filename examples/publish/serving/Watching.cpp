#include "Watching.h"

#include "../Files.h"

namespace publish::serving {

namespace {

// Of what a link leads to, too; nil when nothing is there.
NSDictionary *attributesAt(NSString *path) {
    return NSFileManager::defaultManager()->fileAttributesAtPath(path, /*traverseLink=*/YES);
}

bool isSame(NSDictionary *file, NSDictionary *other) {
    return file && other && file->fileSystemFileNumber() == other->fileSystemFileNumber() &&
           file->fileSystemNumber() == other->fileSystemNumber();
}

bool isLink(NSDictionary *attributes) {
    return attributes && attributes->fileType()->isEqual(NSFileTypeSymbolicLink);
}

} // namespace

Watch::Watch(NSString *directory, NSString *target, NSString *log)
    : target_(target), ownLog_(log ? attributesAt(log) : nullptr) {
    noteTarget();
    const std::string place = realPath(directory);
    places_.insert(place);
    states_->setObjectForKey(stateOf(directory, place), directory);
}

// --- What this program writes itself ---

// Another directory may stand there by now; but the log stays the file that was opened, whatever its name is.
void Watch::noteTarget() {
    ownTarget_ = attributesAt(target_);
}

bool Watch::isOwn(NSDictionary *attributes) const {
    return isSame(attributes, ownTarget_) || isSame(attributes, ownLog_);
}

// Calls `visit` with the relative path and the attributes of everything else that stands below a place.
template <class Visit>
void Watch::walk(NSString *place, Visit visit) const {
    NSDirectoryEnumerator *const paths = NSFileManager::defaultManager()->enumeratorAtPath(place);
    while (id path = paths ? paths->nextObject() : nullptr) {
        const NSAutoreleasePool pool;
        NSDictionary *const attributes = paths->fileAttributes();
        if (isOwn(attributes))
            paths->skipDescendents();
        else
            visit(path->stringValue(), attributes);
    }
}

// --- What is watched ---

bool Watch::isWithinAny(const Places &places, std::string_view place) {
    for (std::size_t end = place.find('/'); end != std::string_view::npos; end = place.find('/', end + 1))
        if (places.contains(place.substr(0, end + 1)))
            return true;
    return false;
}

bool Watch::add(NSString *path) {
    const std::string place = realPath(path);
    if (isWithinAny(places_, place))
        return false;
    places_.insert(place);
    states_->setObjectForKey(NSString::string(), path);
    return true;
}

void Watch::addLinkedFrom(NSString *directory) {
    Places seen;
    addLinkedFrom(directory, seen);
}

// What is watched already may have got new links.
void Watch::addLinkedFrom(NSString *directory, Places &seen) {
    const std::string real = realPath(directory);
    if (isWithinAny(seen, real))
        return;
    seen.insert(real);
    NSString *const place = NSString::stringWith(real);
    walk(place, [&](NSString *path, NSDictionary *attributes) {
        if (!isLink(attributes))
            return;
        NSString *const link = place->stringByAppendingPathComponent(path);
        NSDictionary *const linked = attributesAt(link);
        if (!linked || isOwn(linked) || !linked->fileType()->isEqual(NSFileTypeDirectory))
            return;
        add(link);
        addLinkedFrom(link, seen);
    });
}

// A digest of the list, so that a large site costs no memory.
NSString *Watch::stateOf(NSString *path, const std::string &real) const {
    QBMD5OutputStream *const digest = QBMD5OutputStream::stream();
    const auto note = [this, digest](NSString *name, NSDictionary *attributes) {
        if (isOwn(attributes))
            return;
        NSDate *const modified = attributes ? attributes->fileModificationDate() : nullptr;
        digest->writeFormat("%@ %llu %llu %u %.6f\n"_ns, name, attributes ? attributes->fileSize() : 0,
                            attributes ? attributes->fileSystemFileNumber() : 0,
                            attributes ? attributes->filePosixPermissions() : 0,
                            modified ? modified->timeIntervalSince1970() : 0);
    };
    NSString *const place = NSString::stringWith(real);
    note(place, attributesAt(path));
    walk(place, [&](NSString *below, NSDictionary *attributes) {
        note(below, attributes);
        if (isLink(attributes))
            note(below, attributesAt(place->stringByAppendingPathComponent(below)));
    });
    return digest->md5Hash();
}

bool Watch::hasChanged() {
    const NSAutoreleasePool pool;
    bool isOther = false;
    noteTarget();
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
