// Values, and what comes back for messages whose types the compiler does not know, as short texts: for
// comparisons that read well when they fail.
#ifndef QBFOUNDATION_TESTS_SUPPORT_DESCRIBE_H
#define QBFOUNDATION_TESTS_SUPPORT_DESCRIBE_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Value.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Strings as they are, arrays as "(a, b)", dictionaries as "{a = b; }", nil as "nil", others by their
/// description.
std::string describe(id object);
/// Integers, numbers, C strings and objects; other kinds by the kind's number.
std::string describe(const qb::Value &value);

/// Sends the message as an invocation does, by way of the class's table, and returns what comes back.
inline qb::Value resultOf(id receiver, const char *selector, std::vector<qb::Value> arguments) {
    NSInvocation *const message = NSInvocation::invocationWithTarget(receiver, Selector::named(selector));
    message->setArguments(std::move(arguments));
    message->invoke();
    return message->returnValue();
}

/// Describes what comes back.
inline std::string answer(id receiver, const char *selector, std::vector<qb::Value> arguments = {}) {
    return describe(resultOf(receiver, selector, std::move(arguments)));
}

/// Asks the class, and expects an object of that very class.
inline std::string made(Class *asked, const char *selector, std::vector<qb::Value> arguments = {}) {
    const qb::Value result = resultOf(asked, selector, std::move(arguments));
    EXPECT_TRUE(result.object() && result.object()->isMemberOfClass(asked)) << selector;
    return describe(result);
}

#endif
