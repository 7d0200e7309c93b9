// Values as short texts, for comparisons that read well when they fail.
#ifndef QBFOUNDATION_TESTS_SUPPORT_DESCRIBE_H
#define QBFOUNDATION_TESTS_SUPPORT_DESCRIBE_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Runtime/Value.h>

#include <string>

/// Strings as they are, arrays as "(a, b)", dictionaries as "{a = b; }", nil as "nil", others by their
/// description.
std::string describe(id object);
/// Integers, numbers, C strings and objects; other kinds by the kind's number.
std::string describe(const qb::Value &value);

#endif
