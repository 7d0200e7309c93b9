// Whole files as bytes.
#ifndef QBFOUNDATION_FOUNDATION_FILECONTENTS_H
#define QBFOUNDATION_FOUNDATION_FILECONTENTS_H

#include <string>

namespace qb {

/// Reads the file `path` to its end into `bytes`, whatever the size that the system states for it. Returns 0,
/// or the system's error number with `bytes` empty: EISDIR for a directory, EFBIG from 4 GiB on.
int readFileContents(const char *path, std::string &bytes);

} // namespace qb

#endif
