// Path text: simplification, relative paths, first and last components.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

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

// What may be left at a simplified path's end without meaning.
std::string withoutIdleEnd(std::string path) {
    while (path.size() > 1 && (path.ends_with('/') || path.ends_with("/.")))
        path.pop_back();
    return path;
}

void checkSimplification(const std::string &path) {
    const std::string result = simplified(path);
    require(result.size() <= path.size());
    require(simplified(result) == result);
    require(path.starts_with('/') == result.starts_with('/'));
    const std::string ended = withoutIdleEnd(result);
    require(ended.find("/./") == std::string::npos);
    require(ended.find("//", 1) == std::string::npos || ended.starts_with("//"));
    require(ended.find("/../", 1) == std::string::npos || ended.starts_with("//"));
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
               !text.ends_with("/.");
    };
    const std::string from = simplified(directory), to = simplified(path);
    if (!isPlain(from) || !isPlain(to))
        return;
    const std::string way = Text(_pathRelativeToDir(to.c_str(), from.c_str())).get();
    require(withoutIdleEnd(simplified(withoutIdleEnd(from) + "/" + way)) == withoutIdleEnd(to));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    const std::string input(reinterpret_cast<const char *>(data), size);
    checkSimplification(input);
    const std::string path = input.substr(0, input.find('\n'));
    const std::string directory = path.size() < input.size() ? input.substr(path.size() + 1) : "";
    checkParts(path.c_str());
    checkRelativePath(path, directory);
    return 0;
}
