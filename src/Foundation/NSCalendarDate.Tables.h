// The tables of the calendar dates' additions, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSCALENDARDATE_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSCALENDARDATE_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> calendarDateISODateTime();
std::span<const Method> calendarDateMidnight();

} // namespace qb::tables

#endif
