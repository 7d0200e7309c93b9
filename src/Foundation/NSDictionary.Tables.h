// The tables of the dictionaries' additions, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSDICTIONARY_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSDICTIONARY_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> dictionaryChecks();
std::span<const Method> dictionaryFileAttributes();
std::span<const Method> dictionaryPropertyListFile();
std::span<const Method> dictionaryReading();
std::span<const Method> dictionaryReplacing();
std::span<const Method> mutableDictionaryAdding();
std::span<const Method> mutableDictionaryReplacing();

} // namespace qb::tables

#endif
