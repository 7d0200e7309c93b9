// Addresses that a page gets by way of its templates: those of other pages, and images inside of it.
#ifndef PUBLISH_LINKS_H
#define PUBLISH_LINKS_H

#include <QBFoundation/QBFoundation.h>

#include <string>
#include <string_view>

namespace publish {

/// Whether an address begins with a scheme, as "https:" (RFC 3986, section 3.1).
bool hasScheme(std::string_view address);

/// Returns a path with all bytes escaped that mean something else in an address (RFC 3986, section 2).
std::string escapedPath(std::string_view path);

/// Returns the link that leads from a page to `target`, both relative to the site's root. An address with a
/// scheme, as "https://example.org", stays as it is.
NSString *linkFrom(NSString *page, NSString *target);

/// Returns an image file as a "data:" address. nil, with an error raised, when it can't be read, is of no
/// known kind or has more than 32 KiB.
NSString *inlineImage(NSString *file);

} // namespace publish

#endif
