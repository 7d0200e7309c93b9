// The tables of the additions that every object has, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSOBJECT_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSOBJECT_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> objectDeepAccess();
std::span<const Method> objectEnumeratorCompatibility();
std::span<const Method> objectKeyAccess();
std::span<const Method> objectOutputStreaming();
std::span<const Method> objectPhpString();

} // namespace qb::tables

#endif
