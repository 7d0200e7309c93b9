// Containers of the value model that hold themselves: counting references could never free them.
#ifndef QBFOUNDATION_FOUNDATION_ARCHIVECIRCLES_H
#define QBFOUNDATION_FOUNDATION_ARCHIVECIRCLES_H

#include <cstddef>
#include <functional>
#include <string_view>

namespace qb::archive {

/// Returns whether an object leads back to itself by way of containers alone, for an archive with `count`
/// objects. `valuesOf` returns the bytes of an object's values, none for what is no container; they may be
/// malformed.
bool haveCircle(std::size_t count, const std::function<std::string_view(std::size_t index)> &valuesOf);

} // namespace qb::archive

#endif
