#include "Plugins.h"

#include "Files.h"
#include "Messages.h"

namespace publish {

namespace {

// The null object takes the value of its key away.
void removeNulls(NSMutableDictionary *head) {
    for (id key : *head->allKeys())
        if (IsNil(head->objectForKey(key)))
            head->removeObjectForKey(key);
}

} // namespace

bool Plugins::load(NSString *directory) {
    if (!directory)
        return true;
    NSArray *const files = NSFileManager::defaultManager()->directoryContentsAtPath(directory);
    if (!files)
        return fail(__LINE__, kErrorDirectoryUnreadable, directory);
    for (id element : *files->sortedArrayUsingSelector("compare:"_sel)) {
        auto *name = static_cast<NSString *>(element);
        const bool isPlugin = name->hasPrefix("lib"_ns) &&
                              name->pathExtension()->isEqualToString(OSFilePath::sharedLibExtension());
        if (isPlugin && !loadLibrary(directory->stringByAppendingPathComponent(name)))
            return false;
    }
    return true;
}

bool Plugins::loadLibrary(NSString *file) {
    if (!mayBeRead(file))
        return false;
    OSDynamicLoader::loadLibraryFromPath(file);
    NSString *const name =
        file->lastPathComponent()->stringByDeletingPathExtension()->substringFromIndex(3); // behind "lib"
    Class *const cls = NSClassFromString(name);
    if (!cls || !cls->respondsToSelector("valuesForPage:body:"_sel))
        return fail(__LINE__, kErrorNoPlugin, file, name);
    classes_.push_back(cls);
    return true;
}

bool Plugins::addValues(Site &site) const {
    if (classes_.empty())
        return true;
    for (Page &page : site.pages) {
        const NSAutoreleasePool pool;
        for (Class *const cls : classes_) {
            const id values = send<id>(cls, "valuesForPage:body:"_sel, page.head.get(), page.body.get());
            if (auto *dictionary = qb::castOrNil<NSDictionary>(values))
                page.head->addEntriesFromDictionary(dictionary);
            removeNulls(page.head);
        }
        if (!settle(page) || hasFailed())
            return false;
    }
    return true;
}

} // namespace publish
