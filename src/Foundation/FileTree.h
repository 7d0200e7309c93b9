// Files and directories with all that is in them.
//
// Each function returns false after a failure, with errno set. Links are not followed.
#ifndef QBFOUNDATION_FOUNDATION_FILETREE_H
#define QBFOUNDATION_FOUNDATION_FILETREE_H

#include <string>
#include <vector>

namespace qb::tree {

/// Stores the names in a directory, in the system's order.
bool list(const std::string &directory, std::vector<std::string> &names);

/// Appends the paths of all that is below a directory, each with `prefix` in front. Directories inside that
/// can't be read count as empty.
bool listAll(const std::string &directory, const std::string &prefix, std::vector<std::string> &paths);

/// Copies to a name that nothing has yet; EEXIST when something has it, EINVAL when it lies inside of
/// `source`.
bool copy(const std::string &source, const std::string &target);

/// Removes as much as it can.
bool remove(const std::string &path);

/// Whether both hold the same; false with errno 0 when they are different.
bool areEqual(const std::string &a, const std::string &b);

/// Stores the text of a link.
bool readLink(const std::string &path, std::string &text);

} // namespace qb::tree

#endif
