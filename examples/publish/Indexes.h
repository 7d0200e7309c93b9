// What programs read of a site: the site map and the feed.
#ifndef PUBLISH_INDEXES_H
#define PUBLISH_INDEXES_H

#include "Publication.h"
#include "Site.h"

namespace publish {

/// Hands "sitemap.xml", a list of all pages, and "feed.xml", an RSS feed of the dated ones, the newest first,
/// to a publication. A site without an address gets neither. Returns false, with an error raised, when they
/// can't be made.
bool addIndexes(const Site &site, Publication &publication);

} // namespace publish

#endif
