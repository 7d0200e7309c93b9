// The tables of the additions to data, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSDATA_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSDATA_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> dataFile();
std::span<const Method> dataHexString();
std::span<const Method> dataPropertyList();

} // namespace qb::tables

#endif
