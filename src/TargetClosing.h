// The end of streams that write to others.
#ifndef QBFOUNDATION_TARGETCLOSING_H
#define QBFOUNDATION_TARGETCLOSING_H

#include <QBFoundation/QBOutputStream.h>

namespace qb {

/// Calls `end`, then closes `target`, also when a client's error handler throws from `end`.
template <class End>
void closeAfter(QBOutputStream *target, End end) {
    try {
        end();
    } catch (...) {
        target->close();
        throw;
    }
    target->close();
}

} // namespace qb

#endif
