#include "ContentType.h"

namespace publish {

namespace {

struct ContentType {
    const char *extension;
    const char *type;
};

constexpr ContentType kContentTypes[] = {
    {"atom", "application/atom+xml; charset=utf-8"},
    {"css", "text/css; charset=utf-8"},
    {"csv", "text/csv; charset=utf-8"},
    {"gif", "image/gif"},
    {"html", "text/html; charset=utf-8"},
    {"ico", "image/x-icon"},
    {"jpeg", "image/jpeg"},
    {"jpg", "image/jpeg"},
    {"js", "text/javascript; charset=utf-8"},
    {"json", "application/json"},
    {"mp4", "video/mp4"},
    {"pdf", "application/pdf"},
    {"plist", "text/plain; charset=utf-8"},
    {"png", "image/png"},
    {"svg", "image/svg+xml"},
    {"txt", "text/plain; charset=utf-8"},
    {"wasm", "application/wasm"},
    {"webp", "image/webp"},
    {"woff2", "font/woff2"},
    {"xml", "application/xml; charset=utf-8"},
    {"zip", "application/zip"},
};

} // namespace

NSString *contentTypeOf(NSString *file) {
    const std::string_view extension = file->pathExtension()->lowercaseString()->view();
    for (const ContentType &known : kContentTypes)
        if (extension == known.extension)
            return NSString::stringWith(known.type);
    return "application/octet-stream"_ns;
}

} // namespace publish
