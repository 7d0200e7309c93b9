// The table of the enumerators' addition, defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSENUMERATOR_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSENUMERATOR_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> enumeratorFiltering();

} // namespace qb::tables

#endif
