// The tables of the further operations of paths, each defined beside them.
#ifndef QBFOUNDATION_QBPATH_TABLES_H
#define QBFOUNDATION_QBPATH_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> pathDerivation();
std::span<const Method> pathHierarchicalObject();

} // namespace qb::tables

#endif
