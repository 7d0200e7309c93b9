// The table of the pools' addition, defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSAUTORELEASEPOOL_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSAUTORELEASEPOOL_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> autoreleasePoolAdditions();

} // namespace qb::tables

#endif
