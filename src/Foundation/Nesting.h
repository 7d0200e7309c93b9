// Operations on containers that ask the containers inside them for the same.
#ifndef QB_FOUNDATION_NESTING_H
#define QB_FOUNDATION_NESTING_H

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>

namespace qb {

/// A call of such an operation, for the length of which it stands. `Operation` tells operations apart and has
/// the constant `kDeepest`.
///
/// A call inside `kDeepest` others raises 900003 (depth) and spoils all of them: each asks `isTooDeep` before
/// it goes on, and gives up then. So a container that holds itself is gone down once and no more.
template <class Operation>
class Nesting {
public:
    Nesting(const char *file, int line) {
        if (open_ <= Operation::kDeepest || isTooDeep_)
            return;
        isTooDeep_ = true;
        raiseError(file, line, kErrorTooDeep, Operation::kDeepest);
    }
    Nesting(const Nesting &) = delete;
    Nesting &operator=(const Nesting &) = delete;

    bool isTooDeep() const { return isTooDeep_; }

private:
    // Counted apart, so that an exception from the raising leaves the count right.
    struct Level {
        Level() { ++open_; }
        Level(const Level &) = delete;
        Level &operator=(const Level &) = delete;
        ~Level() {
            if (--open_ == 0)
                isTooDeep_ = false;
        }
    };

    static inline constinit unsigned open_ = 0;
    static inline constinit bool isTooDeep_ = false;
    const Level level_;
};

} // namespace qb

#endif
