#include "Links.h"

#include "Files.h"
#include "Messages.h"

#include <array>
#include <string_view>

namespace publish {

namespace {

constexpr std::uint32_t kLargestImage = 32 * 1024; // what is larger is better loaded once for all pages

struct ImageKind {
    std::string_view extension;
    std::string_view type;
};

constexpr std::array kImageKinds = {
    ImageKind{"gif", "image/gif"},   ImageKind{"ico", "image/x-icon"}, ImageKind{"jpeg", "image/jpeg"},
    ImageKind{"jpg", "image/jpeg"},  ImageKind{"png", "image/png"},    ImageKind{"svg", "image/svg+xml"},
    ImageKind{"webp", "image/webp"},
};

std::string_view typeOf(NSString *file) {
    for (const ImageKind &kind : kImageKinds)
        if (file->pathExtension()->lowercaseString()->view() == kind.extension)
            return kind.type;
    return {};
}

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

NSString *linkFrom(NSString *page, NSString *target) {
    return hasScheme(target->view()) ? target
                                     : fromRoot(page)->relativePathTo(fromRoot(target))->stringValue();
}

NSString *inlineImage(NSString *file) {
    const std::string_view type = typeOf(file);
    NSData *const image = type.empty() || !isSmall(file) ? nullptr : readBytes(file);
    if (!image || image->length() > kLargestImage) {
        fail(__LINE__, kErrorNoSmallImage, file, kLargestImage);
        return nullptr;
    }
    QBStringOutputStream *const address = QBStringOutputStream::streamWithCapacity(image->length() * 2 + 64);
    address->writeObject(NSString::stringWith("data:" + std::string(type) + ";base64,"));
    QBBase64OutputFilter *const base64 = QBBase64OutputFilter::streamWithTarget(address);
    base64->writeObject(image);
    base64->flush();
    return address->targetString();
}

} // namespace publish
