// The tables of the dates' additions, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSDATE_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSDATE_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> dateCTime();
std::span<const Method> dateMidnight();
std::span<const Method> dateQBDatabaseDate();

} // namespace qb::tables

#endif
