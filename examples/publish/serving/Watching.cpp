#include "Watching.h"

#include "../Files.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace publish::serving {

namespace {

// Of what a link leads to, too; nil when nothing is there.
NSDictionary *attributesAt(NSString *path) {
    return NSFileManager::defaultManager()->fileAttributesAtPath(path, /*traverseLink=*/YES);
}

bool isLink(NSDictionary *attributes) {
    return attributes && attributes->fileType()->isEqual(NSFileTypeSymbolicLink);
}

} // namespace

Watch::Watch(NSString *directory, NSString *target, NSString *log) : target_(target), log_(log) {
    noteOwn();
    const std::string place = realPath(directory);
    places_.insert(place);
    states_->setObjectForKey(stateOf(directory, place), directory);
}

// --- What this program writes itself ---

// Another directory may have the target's name by now, and another file the log's.
void Watch::noteOwn() {
    own_.clear();
    for (NSString *path : {target_.get(), log_.get()})
        if (NSDictionary *const attributes = path ? attributesAt(path) : nullptr)
            own_.emplace_back(attributes->fileSystemNumber(), attributes->fileSystemFileNumber());
    noteOpen();
}

// A log that is open is written to, whatever its name is.
void Watch::noteOpen() {
    NSArray *const descriptors = NSFileManager::defaultManager()->directoryContentsAtPath("/proc/self/fd"_ns);
    for (std::uint32_t i = 0; descriptors && i < descriptors->count(); ++i) {
        const int file = descriptors->objectAtIndex(i)->stringValue()->intValue();
        struct stat info;
        if (::fstat(file, &info) == 0 && S_ISREG(info.st_mode) &&
            (::fcntl(file, F_GETFL) & O_ACCMODE) != O_RDONLY)
            own_.emplace_back(info.st_dev, info.st_ino);
    }
}

bool Watch::isOwn(NSDictionary *attributes) const {
    if (!attributes)
        return false;
    const Identity file(attributes->fileSystemNumber(), attributes->fileSystemFileNumber());
    return std::find(own_.begin(), own_.end(), file) != own_.end();
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

// Without memory for all of it nothing is noted, so that what has changed is seen the next time.
bool Watch::hasChanged() {
    const NSAutoreleasePool pool;
    bool isOther = false;
    noteOwn();
    Places places;
    const Ref<NSMutableDictionary> states = NSMutableDictionary::init();
    for (id element : *states_->allKeys()) {
        auto *path = static_cast<NSString *>(element);
        const std::string place = realPath(path);
        places.insert(place);
        NSString *const now = stateOf(path, place);
        isOther |= !now->isEqual(states_->objectForKey(path));
        states->setObjectForKey(now, path);
    }
    places_.swap(places);
    states_ = states;
    return isOther;
}

} // namespace publish::serving
