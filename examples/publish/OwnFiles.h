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
bool writeManifest(const Manifest &manifest, NSString *file);

/// Reads the list of a site's files; one without digests has none. Returns false, with an error raised, as
/// for `readPlan`.
bool readManifest(NSString *file, Manifest &manifest);

/// Returns the MD5 of a text as 32 hexadecimal digits.
NSString *digestOf(NSData *text);
/// As above, of a file's content, which may be larger than memory; nil, with an error raised, when it can't
/// be read.
NSString *digestOfFile(NSString *file);

} // namespace publish

#endif
