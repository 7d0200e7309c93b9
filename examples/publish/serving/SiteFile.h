// A file of the written site, opened for an answer.
#ifndef PUBLISH_SERVING_SITEFILE_H
#define PUBLISH_SERVING_SITEFILE_H

#include "Request.h"

#include <cstdint>
#include <ctime>

namespace publish::serving {

struct SiteFile {
    Status status = Status::notFound; // ok when the rest holds
    Ref<QBInputStream> content;       // closes the file when it is closed
    Ref<NSString> type;               // "text/html; charset=utf-8"
    std::uint64_t size = 0;
    std::time_t modified = 0;
};

/// Opens the file that a request's path names below the directory `root`, a directory's index.html for the
/// directory itself. A directory without the slash at its end is movedPermanently.
///
/// Nothing is found whose name, or that of a directory on the way, begins with a dot; nor anything outside of
/// `root`, whichever links lead there: what counts is where the file is that was opened.
SiteFile openSiteFile(NSString *root, NSString *path);

} // namespace publish::serving

#endif
