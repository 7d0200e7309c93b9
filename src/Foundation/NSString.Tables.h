// The tables of the strings' additions, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSSTRING_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSSTRING_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> stringFormat();
std::span<const Method> stringRestrictedFormat();
std::span<const Method> stringISODateTime();
std::span<const Method> mutableStringRestrictedFormat();

} // namespace qb::tables

#endif
