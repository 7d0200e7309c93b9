// A directory for the files of one test.
#ifndef QBFOUNDATION_TESTS_SUPPORT_TEMPORARYDIRECTORY_H
#define QBFOUNDATION_TESTS_SUPPORT_TEMPORARYDIRECTORY_H

#include <QBFoundation/Foundation/NSString.h>

#include <string>
#include <string_view>
#include <vector>

/// A new directory that goes away, with all that is in it, at the end of the scope. Names are relative to it.
class TemporaryDirectory {
public:
    /// In the directory for such things.
    TemporaryDirectory();
    /// The directory of that name, in a new one in memory, where that is to be had.
    explicit TemporaryDirectory(std::string_view name);
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    /// The directory's absolute path, without links in it.
    const std::string &path() const { return path_; }
    /// The path of `name` in the directory.
    std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }
    /// The path of `name`, autoreleased.
    NSString *string(std::string_view name) const { return NSString::stringWith(*this / name); }

    /// Makes the file, and the directories above it, with those bytes.
    void write(std::string_view name, std::string_view bytes) const;
    /// Makes the directory and those above it.
    void makeDirectory(std::string_view name) const;
    /// Makes a symbolic link with that text, and the directories above it.
    void link(std::string_view text, std::string_view name) const;
    /// The file's bytes; "(missing)" when it can't be read.
    std::string read(std::string_view name) const;
    /// Whether something has that name, be it a dangling link.
    bool has(std::string_view name) const;
    /// The names directly in the directory `name`, sorted.
    std::vector<std::string> names(std::string_view name = ".") const;

private:
    std::string made_;
    std::string path_;
};

#endif
