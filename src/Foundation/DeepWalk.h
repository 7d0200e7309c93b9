// Going through containers inside containers, however deep, without the thread's stack.
#ifndef QB_FOUNDATION_DEEPWALK_H
#define QB_FOUNDATION_DEEPWALK_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

namespace qb {

/// The kinds of containers; mutable ones and subclasses are of the kind of their base.
enum class ContainerKind : std::uint8_t { none, array, dictionary, set };

/// Returns the kind of a container; `none` for other objects and nil.
ContainerKind containerKindOf(id object);

/// Whether two containers are of one kind and hold equal values: what `isEqual:` of the containers does.
///
/// Containers inside them are compared by a list of what is open, so that depth costs memory, some 40 bytes a
/// level, and no stack. Long walks remember those that several others hold. A subclass's own `isEqual:` is
/// asked, unless such questions are inside each other too deeply already. Containers that hold themselves are
/// equal when no difference is found on the way. Throws std::bad_alloc.
bool areContainersEqual(id a, id b);

/// Returns the hash of a container: what `hash` of the containers does. Equal containers have equal hashes.
///
/// All its elements and entries count, and so does a bounded number of those inside the containers in it.
/// These share that number: a longer array counts with its first and its last elements, a table with more
/// entries with how many it has, and what has no share as any other. A subclass's own `hash` is asked.
/// Other classes' containers begin anew with what their `hash` asks, so that its answer depends on nobody.
std::uint32_t hashOfContainer(id container);

} // namespace qb

#endif
