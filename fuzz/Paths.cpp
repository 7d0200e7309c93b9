// Path text: simplification, relative paths, first and last components.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

struct Free {
    void operator()(char *memory) const { std::free(memory); }
};
using Text = std::unique_ptr<char, Free>;

std::string simplified(const std::string &path) {
    return std::string(OSFilePath::stringBySimplifyingPath(NSString::stringWith(path))->view());
}

// The same rules from the other side: the path is cut into its components first.
std::string plainlySimplified(const std::string &path) {
    std::size_t root = path.starts_with("/") ? 1 : 0;
    if (path.starts_with("//"))
        root = path.find('/', 2) == std::string::npos ? path.size() : path.find('/', 2) + 1;
    std::vector<std::string> kept;
    std::size_t tail = root; // what stands behind the last component of any effect
    bool isOpen = false;     // whether that is a name with nothing behind it
    for (std::size_t start = root; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string component = path.substr(start, end - start);
        if (component == ".." && !kept.empty()) {
            kept.pop_back();
            tail = end;
            isOpen = false;
        } else if (!component.empty() && component != ".") {
            kept.push_back(component);
            tail = std::min(end + 1, path.size());
            isOpen = end == path.size();
        }
        start = end + 1;
    }
    std::string result = path.substr(0, root);
    for (const std::string &component : kept)
        result += component + "/";
    if (isOpen)
        result.pop_back();
    else if (!kept.empty())
        result += path.substr(tail);
    return result.empty() ? "." : result;
}

// What may be left at a simplified path's end without meaning.
std::string withoutIdleEnd(std::string path) {
    while (path.size() > 1 && (path.ends_with('/') || path.ends_with("/.")))
        path.pop_back();
    return path;
}

// "//host/", whatever the host's name is, "/" or nothing.
std::string rootOf(const std::string &path) {
    if (path.starts_with("//"))
        return path.substr(0, path.find('/', 2)) + (path.find('/', 2) == std::string::npos ? "" : "/");
    return path.starts_with('/') ? "/" : "";
}

void checkSimplification(const std::string &path) {
    const std::string result = simplified(path), root = rootOf(path);
    require(result == (path.empty() ? "" : plainlySimplified(path)));
    require(result.size() <= path.size());
    require(simplified(result) == result);
    require(rootOf(result) == root);
    const std::string components = withoutIdleEnd("/" + result.substr(root.size()));
    require(components.find("/./") == std::string::npos);
    require(components.find("//") == std::string::npos);
    require((components + "/").find("/../", 1) == std::string::npos);
}

void checkParts(const char *path) {
    const std::string text = path, base = _basename(path);
    const std::string directory = Text(_dirname(path)).get();
    require(base.find('/') == std::string::npos);
    require(text == (base.size() == text.size() ? base : directory + "/" + base));
    require(_isPathSubpathOfPath(path, directory.c_str()));
    NSString *const string = NSString::stringWith(text);
    const std::string first(OSFilePath::firstPathComponentOf(string)->view());
    const std::string rest(OSFilePath::stringByDeletingFirstPathComponentOf(string)->view());
    require(text == first || text == first + "/" + rest);
}

// The way from a directory to a path leads there.
void checkRelativePath(const std::string &path, const std::string &directory) {
    const std::string relative = Text(_pathRelativeToDir(path.c_str(), directory.c_str())).get();
    const auto isPlain = [](const std::string &text) {
        return text.starts_with('/') && !text.starts_with("//") && !text.starts_with("/..") &&
               (text + "/").find("/./") == std::string::npos;
    };
    const std::string from = simplified(directory), to = simplified(path);
    if (!isPlain(from) || !isPlain(to))
        return;
    const std::string way = Text(_pathRelativeToDir(to.c_str(), from.c_str())).get();
    const std::string start = withoutIdleEnd(from);
    const std::string walked = simplified(start + (start == "/" ? "" : "/") + way);
    require(withoutIdleEnd(walked) == withoutIdleEnd(to));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    const std::string input(reinterpret_cast<const char *>(data), size);
    checkSimplification(input);
    // C strings end at their first NUL byte.
    const std::size_t lineEnd = std::min(input.find('\n'), input.size());
    const std::string path = input.substr(0, lineEnd).c_str();
    const std::string directory = input.substr(std::min(lineEnd + 1, input.size())).c_str();
    checkParts(path.c_str());
    checkRelativePath(path, directory);
    return 0;
}
