// A file of the written site, opened for an answer.
#ifndef PUBLISH_SERVING_SITEFILE_H
#define PUBLISH_SERVING_SITEFILE_H

#include "Request.h"

#include <cstdint>
#include <ctime>
#include <string>

namespace publish::serving {

struct SiteFile {
    Status status = Status::notFound; // ok when the rest holds
    Ref<QBInputStream> content;       // closes the file when it is closed
    Ref<NSString> type;               // "text/html; charset=utf-8"
    std::uint64_t size = 0;
    std::time_t modified = 0;
};

/// Returns where a directory is, without links on the way, with a slash at the end; an
/// empty text, which nothing may be served from, when that can't be found out.
std::string realDirectory(NSString *path);

/// Opens the file that a request's path names below `root`, a `realDirectory`; a directory's index.html for
/// the directory itself. A directory without the slash at its end is movedPermanently; when the system has
/// no descriptor or memory left or can't read, the answer is serviceUnavailable.
///
/// Nothing is found whose name, or that of a directory on the way, begins with a dot; nor anything outside of
/// `root`, whichever links lead there: what counts is where the file is that was opened.
SiteFile openSiteFile(const std::string &root, NSString *path);

} // namespace publish::serving

#endif
