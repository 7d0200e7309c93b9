// The tables of the operations that read and write property-list files.
#ifndef QBFOUNDATION_FOUNDATION_PROPERTYLISTFILE_TABLES_H
#define QBFOUNDATION_FOUNDATION_PROPERTYLISTFILE_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> arrayPropertyListFile();
std::span<const Method> dictionaryPropertyListFile();

} // namespace qb::tables

#endif
