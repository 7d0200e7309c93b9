// The tables of the arrays' further operations, each defined beside them.
#ifndef QBFOUNDATION_FOUNDATION_NSARRAY_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSARRAY_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> arrayDerivation();
std::span<const Method> arrayFiltering();
std::span<const Method> arrayOrder();
std::span<const Method> arrayPath();
std::span<const Method> mutableArrayOrder();

} // namespace qb::tables

#endif
