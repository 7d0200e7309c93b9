// Reading the site's files.
#ifndef PUBLISH_FILES_H
#define PUBLISH_FILES_H

#include <QBFoundation/QBFoundation.h>

#include <string_view>

namespace publish {

/// Returns the file's text; nil, with an error raised, when it can't be read or is not valid UTF-8.
NSString *readText(NSString *file);

/// Returns the paths of the files below a directory, relative to it, in byte order; links are not followed.
/// Names that begin with a dot are left out. nil, with an error raised, when a directory can't be read.
NSArray *filesBelow(NSString *directory);

/// Whether a relative path stays inside of its directory.
bool isInside(std::string_view path);

} // namespace publish

#endif
