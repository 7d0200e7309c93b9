// Whole files as bytes.
#ifndef QBFOUNDATION_FOUNDATION_FILECONTENTS_H
#define QBFOUNDATION_FOUNDATION_FILECONTENTS_H

#include <string>

class NSString;

namespace qb {

/// Reads the file `path` to its end into `bytes`, whatever the size that the system states for it. Returns 0,
/// or the system's error number with `bytes` empty: EISDIR for a directory, EFBIG from 4 GiB on.
int readFileContents(const char *path, std::string &bytes);

/// As above, for operations that raise errors. Returns false after 100039 (path) for a file that is not
/// there, and 100023 (path, system text) for one that can't be read, each with the place given. The text of a
/// path with a NUL byte is that for EINVAL.
bool readFileContentsOrRaise(NSString *path, std::string &bytes, const char *file, int line);

} // namespace qb

#endif
