// What can be said of paths without asking the file system.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/Foundation/NSString.h>

#include "OSFilePath.Support.h"

#include <algorithm>
#include <cstring>

namespace {

using qb::files::kSeparator;

constexpr std::string_view kUp = "../";

std::size_t rootLength(std::string_view path) {
    if (path.substr(0, 2) != "//")
        return path.substr(0, 1) == "/" ? 1 : 0;
    return std::min(path.find(kSeparator, 2), path.size() - 1) + 1; // a host without a separator is all root
}

// Where the last component of the `length` bytes begins that are kept behind the root; a separator ends it.
std::size_t startOfLastComponent(const char *path, std::size_t root, std::size_t length) {
    do
        --length;
    while (length > root && path[length - 1] != kSeparator);
    return length;
}

// How many bytes of both paths are the way that they share. `path[…]` and `directory[…]` there are the first
// of their own.
std::size_t commonLength(std::string_view path, std::string_view directory) {
    const std::size_t shorter = std::min(path.size(), directory.size());
    const auto differing =
        std::mismatch(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(shorter), directory.begin());
    const auto equal = static_cast<std::size_t>(differing.first - path.begin());
    const auto endsAt = [&](std::string_view text) {
        return equal == text.size() || text[equal] == kSeparator;
    };
    if (equal == shorter && endsAt(path) && endsAt(directory))
        return equal;
    return path.substr(0, equal).rfind(kSeparator) + 1; // 0 when no separator is shared
}

std::size_t countComponents(std::string_view path) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < path.size(); ++i)
        if (path[i] != kSeparator && (i == 0 || path[i - 1] == kSeparator))
            ++count;
    return count;
}

std::string_view withoutTrailingSeparators(std::string_view path) {
    while (path.size() > 1 && path.back() == kSeparator)
        path.remove_suffix(1);
    return path;
}

} // namespace

namespace qb::files {

namespace {

std::size_t simplifySilently(char *path, std::size_t length) {
    if (length == 0)
        return 0;
    const std::size_t root = rootLength({path, length});
    std::size_t kept = root; // so many bytes of the result stand in front
    std::size_t rest = root; // behind this only dots and separators were met, which stay if they end the path
    for (std::size_t position = root; position < length;) {
        const std::size_t end = std::min(std::string_view(path, length).find(kSeparator, position), length);
        const std::string_view component(path + position, end - position);
        if (component.empty()) {
            ++position;
        } else if (component == ".") {
            position = end;
        } else if (component == ".." && kept > root) {
            kept = startOfLastComponent(path, root, kept);
            position = rest = end;
        } else {
            const std::size_t next = std::min(end + 1, length);
            std::memmove(path + kept, path + position, next - position);
            kept += next - position;
            position = rest = next;
        }
    }
    if (kept > root) {
        std::memmove(path + kept, path + rest, length - rest);
        kept += length - rest;
    }
    if (kept == 0)
        path[kept++] = '.';
    return kept;
}

} // namespace

std::size_t simplify(char *path, std::size_t length) {
    if (!isTracing(2))
        return simplifySilently(path, length);
    trace(2, __LINE__, "%s:%d: enter");
    trace(5, __LINE__, "%s:%d: simplify path: %s", std::string(path, length).c_str());
    length = simplifySilently(path, length);
    trace(5, __LINE__, "%s:%d: simplified path: %s", std::string(path, length).c_str());
    trace(2, __LINE__, "%s:%d: leave");
    return length;
}

std::string simplified(std::string path) {
    path.resize(simplify(path.data(), path.size()));
    return path;
}

std::string join(std::string_view directory, std::string_view name) {
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    path.append(directory);
    if (!directory.empty() && directory != "/")
        path.push_back(kSeparator);
    return path.append(name);
}

std::string_view directoryOf(std::string_view path) {
    const std::size_t separator = path.rfind(kSeparator);
    if (separator == std::string_view::npos)
        return {};
    return path.substr(0, std::max<std::size_t>(separator, 1));
}

std::string_view parentOf(std::string_view path) {
    return directoryOf(withoutTrailingSeparators(path));
}

std::string_view lastComponentOf(std::string_view path) {
    path = withoutTrailingSeparators(path);
    return path.substr(path.rfind(kSeparator) + 1);
}

} // namespace qb::files

// --- C functions ---

const char *_basename(const char *path) {
    const char *const separator = path ? std::strrchr(path, kSeparator) : nullptr;
    return separator ? separator + 1 : path;
}

char *_dirname(const char *path) {
    if (!path)
        return nullptr;
    const std::size_t behind = static_cast<std::size_t>(_basename(path) - path);
    const std::size_t length = behind ? behind - 1 : 0;
    char *const directory = qb::files::allocate(length + 1);
    if (!directory)
        return nullptr;
    std::memcpy(directory, path, length);
    directory[length] = '\0';
    return directory;
}

BOOL _isPathSubpathOfPath(const char *path, const char *directory) {
    return path && directory && std::string_view(path).starts_with(directory);
}

char *_pathRelativeToDir(const char *path, const char *directory) {
    constexpr std::size_t kSpare = 10;
    if (!path || !directory)
        return nullptr;
    const std::size_t common = commonLength(path, directory);
    const std::size_t ups = countComponents(std::string_view(directory).substr(common));
    std::string_view rest = std::string_view(path).substr(common);
    while (rest.starts_with(kSeparator)) // a simplified path may end with several
        rest.remove_prefix(1);
    char *const relative = qb::files::allocate(kUp.size() * ups + rest.size() + kSpare);
    if (!relative)
        return nullptr;
    char *end = relative;
    for (std::size_t i = 0; i < ups; ++i)
        end = std::copy(kUp.begin(), kUp.end(), end);
    *std::copy(rest.begin(), rest.end(), end) = '\0';
    return relative;
}

// --- Operations ---

NSString *OSFilePath::pathSeparatorString() {
    return "/"_ns;
}

NSString *OSFilePath::sharedLibExtension() {
    return "so"_ns;
}

NSString *OSFilePath::stringBySimplifyingPath(NSString *path) {
    if (!path || path->view().empty())
        return path;
    return NSString::stringWith(qb::files::simplified(std::string(path->view())));
}

NSString *OSFilePath::stringByNormalizingAndSimplifyingPath(NSString *path) {
    return stringBySimplifyingPath(path);
}

NSString *OSFilePath::stringByNormalizingPath(NSString *path) {
    return path ? path->copy().autorelease() : nullptr;
}

NSString *OSFilePath::stringByStandardizingPath(NSString *path) {
    return stringByNormalizingPath(path);
}

BOOL OSFilePath::isAbsolutePath(NSString *path) {
    return path && path->view().starts_with(kSeparator);
}

NSString *OSFilePath::firstPathComponentOf(NSString *path) {
    return path ? NSString::stringWith(path->view().substr(0, path->view().find(kSeparator))) : nullptr;
}

NSString *OSFilePath::stringByDeletingFirstPathComponentOf(NSString *path) {
    if (!path)
        return nullptr;
    const std::size_t separator = path->view().find(kSeparator);
    return separator == std::string_view::npos ? NSString::string()
                                               : NSString::stringWith(path->view().substr(separator + 1));
}
