// Looking at files and reading them.
#ifndef PUBLISH_FILES_H
#define PUBLISH_FILES_H

#include <QBFoundation/QBFoundation.h>

#include <string>
#include <string_view>
#include <sys/stat.h>

namespace publish {

/// What has a name. A link is a link, wherever it leads.
enum class Kind { nothing, file, directory, link, other };

/// Whether something stands at a path, and what the system tells of it, of a link itself; false, and 100194
/// raised, when that can't be found out.
bool statusOf(NSString *path, struct stat &status);

/// Returns what stands at a path; nothing, and 100194 raised, when that can't be found out.
Kind kindOf(NSString *path);

/// Whether the file, if it exists, is none that would keep us waiting, as a pipe does; 910017 is raised for
/// what is no plain file.
bool mayBeRead(NSString *file);

/// Returns the file's bytes; nil, with an error raised, when it can't be read or is no plain file.
NSData *readBytes(NSString *file);

/// Returns the file's text; nil, with an error raised, when it can't be read, is no plain file or is not
/// valid UTF-8.
NSString *readText(NSString *file);

/// Returns the bytes as a text.
NSString *textIn(NSData *data);

/// Whether the text, which came from `file` or goes there, is valid UTF-8; an error is raised when it is not.
bool isUtf8(NSString *text, NSString *file);

/// Returns the dictionary that a text, which came from `file`, is as a property list; nil, with an error
/// raised, when it is none.
NSDictionary *dictionaryIn(NSString *text, NSString *file);

/// Returns the dictionary that a file is as a property list; nil, with an error raised, when it can't be read
/// or is none.
NSDictionary *readDictionary(NSString *file);

enum class HiddenFiles { leftOut, included };

/// Returns the paths of the files below a directory, relative to it, in byte order; links are not followed.
/// `hidden`: what becomes of names that begin with a dot. nil, with an error raised, when a directory can't
/// be read.
NSArray *filesBelow(NSString *directory, HiddenFiles hidden);

/// Whether a relative path stays inside of its directory.
bool isInside(std::string_view path);

/// Returns the directory's path without links as far as there is one, "." and "..", with a separator at its
/// end.
std::string realPath(NSString *directory);

/// Whether the two directories, which need not exist, are different ones and neither is inside of the other.
bool areApart(NSString *one, NSString *other);

} // namespace publish

#endif
