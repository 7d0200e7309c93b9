// Files and directories with all that is in them.
//
// Each function returns false after a failure, with errno set. Links are not followed. One directory is open
// at a time, whatever the depth, which ends where a path has PATH_MAX bytes.
#ifndef QBFOUNDATION_FOUNDATION_FILETREE_H
#define QBFOUNDATION_FOUNDATION_FILETREE_H

#include <cstddef>
#include <string>
#include <vector>

namespace qb::tree {

/// Stores the names in a directory, in the system's order.
bool list(const std::string &directory, std::vector<std::string> &names);

/// The way through a tree, by a list of the directories that are open, so that depth costs memory and no
/// stack. It knows names only: whoever walks reads a directory, and says that it is to be gone through.
class Walk {
public:
    enum class Step { entry, directoryEnd, end };

    /// Goes on with the names in the directory at `below`.
    void enter(std::vector<std::string> names);
    /// Goes no further in the innermost directory.
    void leave();
    /// Moves on: to the next name, or the end of a directory, which is its own place once more.
    Step step();
    /// The place below the top: empty for the top itself, else each name with a slash in front.
    const std::string &below() const { return below_; }

private:
    struct Directory {
        std::vector<std::string> names;
        std::size_t next;
        std::size_t length; // of its own place
    };

    std::string below_;
    std::vector<Directory> open_; // the top first
};

/// Copies to a name that nothing has yet; EEXIST when something has it, EINVAL when it lies inside of
/// `source`.
bool copy(const std::string &source, const std::string &target);

/// As `copy`, but gives the files and links further names instead.
bool link(const std::string &source, const std::string &target);

/// Removes as much as it can.
bool remove(const std::string &path);

/// Whether both hold the same; false with errno 0 when they are different.
bool areEqual(const std::string &a, const std::string &b);

/// Stores the text of a link.
bool readLink(const std::string &path, std::string &text);

} // namespace qb::tree

#endif
