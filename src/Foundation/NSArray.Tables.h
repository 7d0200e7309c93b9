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
std::span<const Method> arrayPropertyListFile();
std::span<const Method> arrayReplacing();
std::span<const Method> arrayReshaping();
std::span<const Method> arraySets();
std::span<const Method> arraySortingByKey();
std::span<const Method> arrayTexts();
std::span<const Method> mutableArrayAdding();
std::span<const Method> mutableArrayOrder();
std::span<const Method> mutableArrayReplacing();
std::span<const Method> mutableArraySets();

} // namespace qb::tables

#endif
