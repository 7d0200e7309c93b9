#include "Links.h"

#include "Collecting.h"
#include "ContentType.h"
#include "Files.h"
#include "Messages.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace publish {

namespace {

constexpr std::uint32_t kLargestImage = 32 * 1024; // what is larger is better loaded once for all pages

// Whether it is one; a file that is not there has no size.
bool isSmall(NSString *file) {
    return OSFilePath::fileSizeAtPath(file) <= static_cast<std::int32_t>(kLargestImage);
}

QBPath *fromRoot(NSString *path) {
    return QBPath::qbPathWithString("/"_ns)->pathByAppendingPathComponent(path);
}

// Whether a path's first component has a colon, which no path without "./" may have (RFC 3986, section 4.2).
bool hasColonFirst(std::string_view path) {
    return path.substr(0, path.find('/')).find(':') != std::string_view::npos;
}

// The way from a page to a path from the site's root.
NSString *wayFrom(NSString *page, NSString *path) {
    // That to a directory above the page leads into the one that has it.
    if (path->containsData() && page->hasPrefix(path->stringByAppendingString("/"_ns))) {
        NSString *const above = path->stringByDeletingLastPathComponent();
        NSString *const place = above->containsData() ? above->stringByAppendingString("/"_ns) : above;
        return wayFrom(page, place)->stringByAppendingString(path->lastPathComponent());
    }
    if (path->containsData() && !path->hasSuffix("/"_ns)) {
        NSString *const way = fromRoot(page)->relativePathTo(fromRoot(path))->stringValue();
        return hasColonFirst(way->view()) ? "./"_ns->stringByAppendingString(way) : way;
    }
    // That to a directory is that to a file in it, without the file.
    NSString *const file = wayFrom(page, path->stringByAppendingString("-"_ns));
    NSString *const way = file->substringToIndex(file->length() - 1);
    return way->containsData() ? way : "./"_ns;
}

} // namespace

bool hasScheme(std::string_view address) {
    constexpr std::string_view kBytes = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+-.";
    constexpr std::string_view kLetters = kBytes.substr(0, kBytes.find('0'));
    const std::size_t end = address.find_first_not_of(kBytes);
    return end != std::string_view::npos && address[end] == ':' &&
           kLetters.find(address.front()) != std::string_view::npos;
}

std::string escapedPath(std::string_view path) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string escaped;
    for (const char byte : path) {
        const auto code = static_cast<unsigned char>(byte);
        if (kPlain.find(byte) != std::string_view::npos)
            escaped += byte;
        else
            escaped += {'%', kDigits[code >> 4], kDigits[code & 15]};
    }
    return escaped;
}

NSString *linkFrom(NSString *page, NSString *target) {
    if (hasScheme(target->view()) || target->hasPrefix("//"_ns))
        return target;
    const std::size_t pathLength = std::min(target->view().find_first_of("?#"), target->view().size());
    if (pathLength == 0 && target->containsData()) // a place in the page itself
        return target;
    const std::size_t pathStart = std::min(target->view().find_first_not_of('/'), pathLength);
    std::string path(target->view().substr(pathStart, pathLength - pathStart));
    const auto areSlashes = [](char a, char b) { return a == '/' && b == '/'; };
    path.erase(std::unique(path.begin(), path.end(), areSlashes), path.end());
    NSString *const rest = NSString::stringWith(target->view().substr(pathLength));
    return wayFrom(page, NSString::stringWith(path))->stringByAppendingString(rest);
}

NSString *inlineImage(NSString *file) {
    NSString *const type = contentTypeOf(file);
    NSData *const image = type->hasPrefix("image/"_ns) && isSmall(file) ? readBytes(file) : nullptr;
    if (!image || image->length() > kLargestImage) {
        fail(__LINE__, kErrorNoSmallImage, file, kLargestImage);
        return nullptr;
    }
    QBStringOutputStream *const address = collecting<QBStringOutputStream>(image->length() * 2 + 64);
    address->writeObject(NSString::stringWithFormat("data:%@;base64,"_ns, type));
    QBBase64OutputFilter *const base64 = QBBase64OutputFilter::streamWithTarget(address);
    base64->writeObject(image);
    base64->flush();
    return address->targetString();
}

} // namespace publish
