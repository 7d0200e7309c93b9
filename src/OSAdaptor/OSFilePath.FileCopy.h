// Copies of single files.
#ifndef QBFOUNDATION_OSADAPTOR_OSFILEPATH_FILECOPY_H
#define QBFOUNDATION_OSADAPTOR_OSFILEPATH_FILECOPY_H

#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace qb::files {

/// What a copy failed at. errno says why; without memory the error is raised already.
enum class CopyFailure { none, reading, writing, memory };

/// The bits of a mode that `chmod` sets.
inline constexpr mode_t kPermissionBits = 07777;

/// Returns the mode to create a copy with: no right that the source does not give, but writable for the
/// owner.
mode_t creationMode(mode_t sourceMode);

/// Copies the content from descriptor to descriptor, as far as `status` says that the source goes.
CopyFailure copyContent(int source, int target, const struct stat &status);

/// Raises what belongs to the failure. Returns whether there was none.
bool report(CopyFailure failure, const std::string &source, const std::string &target);

/// Copies one file to a path, be there a file already or not. `status`: the source's. Returns false with an
/// error raised.
bool copyFile(const std::string &source, const struct stat &status, const std::string &target);

} // namespace qb::files

#endif
