// The tables of the strings' additions, each defined beside its operations.
#ifndef QBFOUNDATION_FOUNDATION_NSSTRING_TABLES_H
#define QBFOUNDATION_FOUNDATION_NSSTRING_TABLES_H

#include <QBFoundation/Runtime/Method.h>

#include <span>

namespace qb::tables {

std::span<const Method> stringBinaryTexts();
std::span<const Method> stringCase();
std::span<const Method> stringComparison();
std::span<const Method> stringCreation();
std::span<const Method> stringEncoding();
std::span<const Method> stringFile();
std::span<const Method> stringFormat();
std::span<const Method> stringHtmlEscaping();
std::span<const Method> stringMoneySupport();
std::span<const Method> stringLines();
std::span<const Method> stringPropertyList();
std::span<const Method> stringNumbers();
std::span<const Method> stringPath();
std::span<const Method> stringPathObject();
std::span<const Method> stringRepresentation();
std::span<const Method> stringRestrictedFormat();
std::span<const Method> stringUrlEscaping();
std::span<const Method> stringUtf8Conversion();
std::span<const Method> stringDateParsing();
std::span<const Method> stringISODateTime();
std::span<const Method> stringRegularExpression();
std::span<const Method> stringSearching();
std::span<const Method> stringSplitting();
std::span<const Method> stringSubstrings();
std::span<const Method> mutableStringFormat();
std::span<const Method> mutableStringReplacing();
std::span<const Method> mutableStringRestrictedFormat();

} // namespace qb::tables

#endif
