// Strings as file paths. Nothing here asks the file system, except for home directories.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "System/Process.h"
#include "Text/Room.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr auto npos = std::string_view::npos;

// The path without slashes at its end; "/" for a path of slashes only.
std::string_view trimmed(std::string_view path) {
    const std::size_t last = path.find_last_not_of('/');
    return path.substr(0, last == npos ? 1 : last + 1);
}

// The text without slashes at both ends.
std::string_view bare(std::string_view text) {
    const std::size_t first = text.find_first_not_of('/');
    return first == npos ? std::string_view() : trimmed(text.substr(first));
}

std::string_view lastComponent(std::string_view path) {
    const std::string_view text = trimmed(path);
    return text == "/" ? text : text.substr(text.rfind('/') + 1);
}

// The "." in front of the extension of the last component; npos when it has none.
std::size_t extensionDot(std::string_view component) {
    const std::size_t dot = component.rfind('.');
    return dot != npos && component.find_first_not_of('.') < dot ? dot : npos;
}

void appendComponent(std::string &path, std::string_view component) {
    if (!path.empty() && path.back() != '/' && !component.empty())
        path += '/';
    qb::text::append(path, component);
}

// Calls `visit` with each component that is not empty.
template <class F>
void forEachComponent(std::string_view path, F &&visit) {
    for (std::size_t from = path.find_first_not_of('/'); from != npos;) {
        const std::size_t end = std::min(path.find('/', from), path.size());
        visit(path.substr(from, end - from));
        from = path.find_first_not_of('/', end);
    }
}

// "" when the user is not known.
std::string homeDirectory(std::string_view user) {
    if (!user.empty())
        return qb::sys::homeDirectory(std::string(user).c_str());
    const char *const own = qb::sys::getenv("HOME");
    return own && *own ? own : qb::sys::homeDirectory(nullptr);
}

std::string joined(NSArray *components) {
    std::string path;
    bool isFirst = true;
    for (id element : *qb::required(components, "NSString pathWithComponents:")) {
        auto *const component = qb::castOrNil<NSString>(element);
        if (!component)
            throw InvalidArgumentException("NSString pathWithComponents: must have an array of strings.");
        if (isFirst && component->isAbsolutePath())
            path.assign(1, '/');
        isFirst = false;
        appendComponent(path, bare(component->view()));
    }
    return path;
}

NSString *pathWithComponentsOfClass(Class *asked, NSArray *components) {
    return NSString::initOfClass(asked, joined(components)).autorelease();
}

std::string standardized(std::string_view path) {
    const bool isAbsolute = path.starts_with('/');
    std::vector<std::string_view> kept;
    forEachComponent(path, [&](std::string_view component) {
        if (component == "..") {
            if (!isAbsolute)
                kept.push_back(component);
            else if (!kept.empty())
                kept.pop_back();
        } else if (component != ".") {
            kept.push_back(component);
        }
    });
    std::string result(isAbsolute ? "/" : "");
    for (const std::string_view component : kept)
        appendComponent(result, component);
    return result.empty() && !path.empty() ? "." : result;
}

} // namespace

std::span<const qb::Method> qb::tables::stringPath() {
    static const qb::Method methods[] = {
        qb::classMethod<"pathWithComponents:">(&pathWithComponentsOfClass),
        qb::method<"isAbsolutePath">(&NSString::isAbsolutePath),
        qb::method<"pathComponents">(&NSString::pathComponents),
        qb::method<"lastPathComponent">(&NSString::lastPathComponent),
        qb::method<"stringByDeletingLastPathComponent">(&NSString::stringByDeletingLastPathComponent),
        qb::method<"stringByAppendingPathComponent:">(&NSString::stringByAppendingPathComponent),
        qb::method<"pathExtension">(&NSString::pathExtension),
        qb::method<"stringByDeletingPathExtension">(&NSString::stringByDeletingPathExtension),
        qb::method<"stringByAppendingPathExtension:">(&NSString::stringByAppendingPathExtension),
        qb::method<"stringByExpandingTildeInPath">(&NSString::stringByExpandingTildeInPath),
        qb::method<"stringByAbbreviatingWithTildeInPath">(&NSString::stringByAbbreviatingWithTildeInPath),
        qb::method<"stringByStandardizingPath">(&NSString::stringByStandardizingPath),
        qb::method<"stringsByAppendingPaths:">(&NSString::stringsByAppendingPaths),
        qb::method<"fileSystemRepresentation">(&NSString::fileSystemRepresentation),
        qb::method<"getFileSystemRepresentation:maxLength:">(&NSString::getFileSystemRepresentation),
    };
    return methods;
}

BOOL NSString::isAbsolutePath() const {
    return view().starts_with('/');
}

NSArray *NSString::pathComponents() const {
    const Ref<NSMutableArray> components = NSMutableArray::init();
    if (isAbsolutePath())
        components->addObject("/"_ns);
    forEachComponent(view(), [&components](std::string_view component) {
        components->addObject(initWith(component).get());
    });
    const bool isMarkedDirectory = view().ends_with('/') && !bare(view()).empty();
    if (isMarkedDirectory)
        components->addObject("/"_ns);
    return NSArray::arrayWith(components->view());
}

NSString *NSString::pathWithComponents(NSArray *components) {
    return stringWith(joined(components));
}

NSString *NSString::lastPathComponent() const {
    return converted(lastComponent(view()));
}

NSString *NSString::stringByDeletingLastPathComponent() const {
    const std::string_view path = trimmed(view());
    const std::size_t slash = path.rfind('/');
    return converted(slash == npos ? std::string_view() : trimmed(path.substr(0, slash + 1)));
}

NSString *NSString::stringByAppendingPathComponent(NSString *component) const {
    const std::string_view added =
        qb::required(component, "NSString stringByAppendingPathComponent:")->view();
    if (byteLength_ == 0)
        return component->converted(trimmed(added));
    std::string path(trimmed(view()));
    appendComponent(path, bare(added));
    return converted(path);
}

NSString *NSString::pathExtension() const {
    const std::string_view component = lastComponent(view());
    const std::size_t dot = extensionDot(component);
    return dot == npos ? ""_ns : stringWith(component.substr(dot + 1));
}

NSString *NSString::stringByDeletingPathExtension() const {
    const std::string_view path = trimmed(view());
    const std::string_view component = lastComponent(path);
    const std::size_t dot = extensionDot(component);
    return converted(dot == npos ? path : path.substr(0, path.size() - component.size() + dot));
}

NSString *NSString::stringByAppendingPathExtension(NSString *extension) const {
    qb::required(extension, "NSString stringByAppendingPathExtension:");
    if (extension->byteLength_ == 0 || bare(view()).empty())
        return unchanged();
    std::string path(trimmed(view()));
    path += '.';
    qb::text::append(path, extension->view());
    return stringWith(path);
}

NSString *NSString::stringByExpandingTildeInPath() const {
    if (!view().starts_with('~'))
        return unchanged();
    const std::size_t rest = std::min(view().find('/'), view().size());
    const std::string home = homeDirectory(view().substr(1, rest - 1));
    if (home.empty())
        return unchanged();
    return stringWith(
        std::string(trimmed(home == "/" && rest < byteLength_ ? "" : home)).append(view().substr(rest)));
}

NSString *NSString::stringByAbbreviatingWithTildeInPath() const {
    const std::string home(trimmed(homeDirectory({})));
    if (home.empty() || home == "/" || !view().starts_with(home))
        return unchanged();
    const std::string_view rest = view().substr(home.size());
    return rest.empty() || rest.starts_with('/') ? stringWith(std::string("~").append(rest)) : unchanged();
}

NSString *NSString::stringByStandardizingPath() const {
    return converted(standardized(stringByExpandingTildeInPath()->view()));
}

NSArray *NSString::stringsByAppendingPaths(NSArray *paths) const {
    NSMutableArray *const longer = NSMutableArray::array();
    for (id path : *qb::required(paths, "NSString stringsByAppendingPaths:"))
        longer->addObject(stringByAppendingPathComponent(qb::castOrNil<NSString>(path)));
    return longer;
}

const char *NSString::fileSystemRepresentation() const {
    if (view().find('\0') != npos)
        throw InvalidArgumentException("NSString fileSystemRepresentation must have a text without a NUL.");
    return cString();
}

BOOL NSString::getFileSystemRepresentation(char *buffer, std::uint32_t maxLength) const {
    if (byteLength_ >= maxLength || view().find('\0') != npos)
        return NO;
    std::memcpy(buffer, bytes_, byteLength_ + std::size_t{1});
    return YES;
}
