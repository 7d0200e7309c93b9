#include "support/Answer.h"

#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Runtime/Class.h>

#include <gtest/gtest.h>

static qb::Value resultOf(id receiver, const char *selector, std::vector<qb::Value> arguments) {
    NSInvocation *const message = NSInvocation::invocationWithTarget(receiver, Selector::named(selector));
    message->setArguments(std::move(arguments));
    message->invoke();
    return message->returnValue();
}

std::string answer(id receiver, const char *selector, std::vector<qb::Value> arguments) {
    return describe(resultOf(receiver, selector, std::move(arguments)));
}

std::string made(Class *asked, const char *selector, std::vector<qb::Value> arguments) {
    const qb::Value result = resultOf(asked, selector, std::move(arguments));
    EXPECT_TRUE(result.object() && result.object()->isMemberOfClass(asked)) << selector;
    return describe(result);
}
