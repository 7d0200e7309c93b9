// The archive format, as docs/archive-format.md describes it.
#ifndef QBFOUNDATION_FOUNDATION_ARCHIVEFORMAT_H
#define QBFOUNDATION_FOUNDATION_ARCHIVEFORMAT_H

#include <QBFoundation/Runtime/Class.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

class NSCoder;

namespace qb::archive {

inline constexpr std::string_view kMagic = "QBAR";
inline constexpr unsigned char kVersion = 1;

/// What follows a value's first byte.
enum class Tag : unsigned char {
    nil,
    nullObject,
    object,
    integer,
    largeInteger,
    real,
    bytes,
    selector,
    cls,
    key
};
inline constexpr unsigned char kTags = 10;

/// So deep may objects lie inside each other: a level takes some 700 bytes of stack in the slowest build, and
/// a thread may have as little as 256 KiB.
inline constexpr std::size_t kDeepestObject = 256;

inline constexpr const char *kTooDeep = "objects lie inside each other deeper than 256";
static_assert(kDeepestObject == 256);

/// The class that a record states for an object that was not written; others are an index plus 1.
inline constexpr std::uint32_t kNotWritten = 0;

/// Returns `coder`. Throws InvalidArgumentException when it is nil, as all do that encode or decode
/// themselves.
NSCoder *required(NSCoder *coder);

/// The classes of the value model that have an archived form.
const std::vector<Class *> &valueClasses();

/// Whether `cls` is one of them.
bool isValueClass(Class *cls);

} // namespace qb::archive

#endif
