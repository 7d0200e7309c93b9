// The files that a run leaves for the next one: the journal and the manifest.
#ifndef PUBLISH_OWNFILES_H
#define PUBLISH_OWNFILES_H

#include "OutputDirectory.h"

namespace publish {

/// Writes without syncing: the exchange syncs all files at once. Returns false with an error raised.
bool writeFile(NSString *file, NSData *text);

/// Writes the journal, whole or not at all. Returns false with an error raised.
bool writePlan(const Plan &plan, NSString *file);

/// Reads a journal. Returns false, with an error raised, when it is not whole or names what is no site's.
bool readPlan(NSString *file, Plan &plan);

/// Writes the list of a site's files. Returns false with an error raised.
bool writeManifest(NSArray *files, NSString *file);

/// Returns the list of a site's files, autoreleased; nil, with an error raised, as for `readPlan`.
NSArray *readManifest(NSString *file);

} // namespace publish

#endif
