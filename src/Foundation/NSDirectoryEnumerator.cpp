#include <QBFoundation/Foundation/NSDirectoryEnumerator.h>

#include <QBFoundation/Foundation/NSFileManager.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileTree.h"
#include "System/Files.h"

#include <string>
#include <utility>
#include <vector>

Class *NSDirectoryEnumerator::cls() {
    static const qb::Method methods[] = {
        qb::method<"fileAttributes">(&NSDirectoryEnumerator::fileAttributes),
        qb::method<"directoryAttributes">(&NSDirectoryEnumerator::directoryAttributes),
        qb::method<"skipDescendents">(&NSDirectoryEnumerator::skipDescendents),
    };
    static Class *const self = new Class("NSDirectoryEnumerator", NSEnumerator::cls(), methods);
    return self;
}

NSDirectoryEnumerator::NSDirectoryEnumerator() : walk_(std::make_unique<qb::tree::Walk>()) {}
NSDirectoryEnumerator::~NSDirectoryEnumerator() = default;

NSDirectoryEnumerator *NSDirectoryEnumerator::enumeratorAtPath(NSString *path) {
    auto enumerator = Ref<NSDirectoryEnumerator>::adopt(new NSDirectoryEnumerator);
    enumerator->path_ = path->copy();
    return enumerator->enter() ? enumerator.autorelease() : nullptr;
}

// Begins to go through the directory where the walk stands; false, with errno set, when it can't be read.
bool NSDirectoryEnumerator::enter() {
    std::vector<std::string> names;
    mayEnter_ = false;
    if (!qb::tree::list(path_->cString() + walk_->below(), names))
        return false;
    walk_->enter(std::move(names));
    return true;
}

id NSDirectoryEnumerator::nextObject() {
    struct stat info;
    if (mayEnter_ && qb::sys::lstat((path_->cString() + walk_->below()).c_str(), &info) == 0 &&
        S_ISDIR(info.st_mode))
        enter();
    qb::tree::Walk::Step step = walk_->step();
    while (step == qb::tree::Walk::Step::directoryEnd)
        step = walk_->step();
    mayEnter_ = step == qb::tree::Walk::Step::entry;
    return mayEnter_ ? NSString::stringWith(std::string_view(walk_->below()).substr(1)) : nullptr;
}

NSDictionary *NSDirectoryEnumerator::fileAttributes() const {
    NSString *const path = NSString::stringWith(path_->cString() + walk_->below());
    return NSFileManager::defaultManager()->fileAttributesAtPath(path, /*traverseLink=*/NO);
}

NSDictionary *NSDirectoryEnumerator::directoryAttributes() const {
    return NSFileManager::defaultManager()->fileAttributesAtPath(path_, /*traverseLink=*/YES);
}
