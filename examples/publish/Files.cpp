#include "Files.h"

#include "Messages.h"

namespace publish {

namespace {

// Directories may stand in each other this deep; a site that is deeper has lost its way.
constexpr unsigned kDeepestDirectory = 64;

bool isDirectory(NSString *path) {
    BOOL is = NO;
    return OSFilePath::fileExistsAtPath(path, &is) && is;
}

bool isLink(NSString *path) {
    return NSFileManager::defaultManager()->pathContentOfSymbolicLinkAtPath(path) != nullptr;
}

bool addFiles(NSString *root, NSString *below, unsigned depth, NSMutableArray *files) {
    NSString *const directory = below->containsData() ? root->stringByAppendingPathComponent(below) : root;
    NSArray *const names = NSFileManager::defaultManager()->directoryContentsAtPath(directory);
    if (!names || depth > kDeepestDirectory)
        return fail(__LINE__, kErrorDirectoryUnreadable, directory);
    for (id element : *names->sortedArrayUsingSelector("compare:"_sel)) {
        auto *name = static_cast<NSString *>(element);
        if (name->hasPrefix("."_ns))
            continue;
        NSString *const path = below->containsData() ? below->stringByAppendingPathComponent(name) : name;
        NSString *const full = directory->stringByAppendingPathComponent(name);
        if (isDirectory(full) && !isLink(full)) {
            if (!addFiles(root, path, depth + 1, files))
                return false;
        } else {
            files->addObject(path);
        }
    }
    return true;
}

} // namespace

NSString *readText(NSString *file) {
    NSString *const string = NSString::stringWithContentsOfFile(file);
    if (!string)
        return nullptr;
    const std::int32_t malformed = string->indexOfFirstCorruptUtf8Character();
    if (malformed >= 0) {
        fail(__LINE__, kErrorNotUtf8, file, malformed);
        return nullptr;
    }
    return string;
}

NSArray *filesBelow(NSString *directory) {
    NSMutableArray *const files = NSMutableArray::array();
    return addFiles(directory, NSString::string(), 0, files) ? files : nullptr;
}

bool isInside(std::string_view path) {
    if (path.empty() || path.front() == '/' || path.find('\0') != std::string_view::npos)
        return false;
    for (;;) {
        const std::size_t slash = path.find('/');
        const std::string_view component = path.substr(0, slash);
        if (component.empty() || component == "." || component == "..")
            return false;
        if (slash == std::string_view::npos)
            return true;
        path.remove_prefix(slash + 1);
    }
}

} // namespace publish
