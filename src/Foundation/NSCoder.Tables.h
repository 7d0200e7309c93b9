// The table of the additions to coders, defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSCODER_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSCODER_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> coderAdditions();

} // namespace qb::tables

#endif
