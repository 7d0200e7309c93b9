// The table of an addition to numbers, defined beside it.
#ifndef QBFOUNDATION_FOUNDATION_NSNUMBER_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSNUMBER_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> numberPath();

} // namespace qb::tables

#endif
