#include "Files.h"

#include "Messages.h"

#include <algorithm>
#include <filesystem>

namespace publish {

namespace {

// Directories may stand in each other this deep; a site that is deeper has lost its way.
constexpr unsigned kDeepestDirectory = 64;

bool addFiles(NSString *root, NSString *below, unsigned depth, HiddenFiles hidden, NSMutableArray *files) {
    NSString *const directory = below->containsData() ? root->stringByAppendingPathComponent(below) : root;
    NSArray *const names = NSFileManager::defaultManager()->directoryContentsAtPath(directory);
    if (!names || depth > kDeepestDirectory)
        return fail(__LINE__, kErrorDirectoryUnreadable, directory);
    for (id element : *names) {
        auto *name = static_cast<NSString *>(element);
        if (hidden == HiddenFiles::leftOut && name->hasPrefix("."_ns))
            continue;
        NSString *const path = below->containsData() ? below->stringByAppendingPathComponent(name) : name;
        if (kindOf(directory->stringByAppendingPathComponent(name)) != Kind::directory)
            files->addObject(path);
        else if (!addFiles(root, path, depth + 1, hidden, files))
            return false;
    }
    return !hasFailed();
}

// Bytes as a C literal has them, so that any can be shown.
std::string shown(std::string_view bytes) {
    std::string literal;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code >= ' ' && code < 0x7f) {
            literal += byte;
            continue;
        }
        constexpr std::string_view kDigits = "0123456789abcdef";
        literal += byte == '\n' ? std::string("\\n")
                                : std::string{'\\', 'x', kDigits[code >> 4], kDigits[code & 15]};
    }
    return literal;
}

// Raises the error for a text that is malformed at an offset, with the bytes around it.
void failNotUtf8(NSString *file, std::string_view text, std::size_t malformed) {
    constexpr std::size_t kShown = 16;
    const std::string_view before = text.substr(0, malformed);
    fail(__LINE__, kErrorNotUtf8, file, 1 + std::count(before.begin(), before.end(), '\n'),
         static_cast<std::int32_t>(malformed),
         NSString::stringWith(shown(before.substr(malformed - std::min(malformed, kShown)))),
         NSString::stringWith(shown(text.substr(malformed, kShown))));
}

// Whether a sequence begins so that stands for a surrogate, for more than U+10FFFF, or for what a shorter one
// would have stood for (RFC 3629, section 3).
bool isForbidden(unsigned char first, unsigned char second) {
    return first == 0xC0 || first == 0xC1 || first >= 0xF5 || (first == 0xE0 && second < 0xA0) ||
           (first == 0xED && second >= 0xA0) || (first == 0xF0 && second < 0x90) ||
           (first == 0xF4 && second >= 0x90);
}

// Returns the place of the first such sequence in a text that is made of whole sequences; npos without one.
std::size_t forbiddenIn(std::string_view text) {
    for (std::size_t place = 0; place + 1 < text.size(); ++place)
        if (isForbidden(static_cast<unsigned char>(text[place]), static_cast<unsigned char>(text[place + 1])))
            return place;
    return std::string_view::npos;
}

// Whether a real path is the other directory or leads through it, which may be mounted at several places.
bool isWithin(const std::string &path, const std::string &directory) {
    if (path.starts_with(directory))
        return true;
    std::error_code error; // what does not exist is nothing else
    std::filesystem::path above = path;
    for (; above.has_relative_path(); above = above.parent_path())
        if (std::filesystem::equivalent(above, directory, error))
            return true;
    return false;
}

} // namespace

bool statusOf(NSString *path, struct stat &status) {
    if (::lstat(path->cString(), &status) == 0)
        return true;
    const bool isNothing = errno == ENOENT || errno == ENOTDIR || errno == ELOOP; // a loop on the way
    return !isNothing && failWith(__LINE__, qb::kErrorCannotStat, path);
}

Kind kindOf(NSString *path) {
    struct stat status;
    if (!statusOf(path, status))
        return Kind::nothing;
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        return Kind::file;
    case S_IFDIR:
        return Kind::directory;
    case S_IFLNK:
        return Kind::link;
    default:
        return Kind::other;
    }
}

bool mayBeRead(NSString *file) {
    OSFileInfo info;
    OSFilePath::fileInfo(&info, file);
    return !hasFailed() && (!info.exists || S_ISREG(info.mode) || fail(__LINE__, kErrorNotAFile, file));
}

NSData *readBytes(NSString *file) {
    return mayBeRead(file) ? NSData::dataWithContentsOfFile(file) : nullptr;
}

NSString *readText(NSString *file) {
    NSString *const string = mayBeRead(file) ? NSString::stringWithContentsOfFile(file) : nullptr;
    if (!string)
        return nullptr;
    return isUtf8(string, file) ? string : nullptr;
}

NSString *textIn(NSData *data) {
    return NSString::stringWith({static_cast<const char *>(data->bytes()), data->length()});
}

bool isUtf8(NSString *text, NSString *file) {
    const std::int32_t malformed = text->indexOfFirstCorruptUtf8Character();
    const std::size_t place =
        malformed >= 0 ? static_cast<std::size_t>(malformed) : forbiddenIn(text->view());
    if (place == std::string_view::npos)
        return true;
    failNotUtf8(file, text->view(), place);
    return false;
}

NSDictionary *dictionaryIn(NSString *text, NSString *file) {
    const id value = text->propertyList();
    if (!value) {
        fail(__LINE__, kErrorMalformedFile, file);
        return nullptr;
    }
    auto *dictionary = qb::castOrNil<NSDictionary>(value);
    if (!dictionary)
        fail(__LINE__, kErrorNotADictionary, file, "the text");
    return dictionary;
}

NSDictionary *readDictionary(NSString *file) {
    NSString *const text = readText(file);
    return text ? dictionaryIn(text, file) : nullptr;
}

NSArray *filesBelow(NSString *directory, HiddenFiles hidden) {
    NSMutableArray *const files = NSMutableArray::array();
    if (!addFiles(directory, NSString::string(), 0, hidden, files))
        return nullptr;
    files->sortUsingSelector("compare:"_sel);
    return files;
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

std::string realPath(NSString *directory) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(directory->view(), error);
    std::string real = std::filesystem::weakly_canonical(path, error);
    if (error)
        real = path.lexically_normal();
    return real.ends_with('/') ? real : real + '/';
}

bool areApart(NSString *one, NSString *other) {
    const std::string first = realPath(one), second = realPath(other);
    return !isWithin(first, second) && !isWithin(second, first);
}

} // namespace publish
