// What kind of content a file has, by its name's extension.
#ifndef PUBLISH_CONTENTTYPE_H
#define PUBLISH_CONTENTTYPE_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// Returns the media type (RFC 6838), with the character set of texts; "application/octet-stream" for what is
/// not known.
NSString *contentTypeOf(NSString *file);

} // namespace publish

#endif
