#include "Links.h"

#include "Collecting.h"
#include "ContentType.h"
#include "Files.h"
#include "Messages.h"

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

} // namespace

bool hasScheme(std::string_view address) {
    const std::size_t end = address.find_first_of(":/?#");
    return end != std::string_view::npos && end != 0 && address[end] == ':';
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
    if (hasScheme(target->view()))
        return target;
    if (target->containsData() && !target->hasSuffix("/"_ns))
        return fromRoot(page)->relativePathTo(fromRoot(target))->stringValue();
    // The way to a directory is that to a file in it, without the file.
    NSString *const file = linkFrom(page, target->stringByAppendingString("-"_ns));
    NSString *const way = file->substringToIndex(file->length() - 1);
    return way->containsData() ? way : "./"_ns;
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
