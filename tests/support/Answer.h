// Messages whose types the compiler does not know, and their answers as texts.
#ifndef QBFOUNDATION_TESTS_SUPPORT_ANSWER_H
#define QBFOUNDATION_TESTS_SUPPORT_ANSWER_H

#include "support/Describe.h"

#include <vector>

/// Sends the message as an invocation does, by way of the class's table, and describes what comes back.
std::string answer(id receiver, const char *selector, std::vector<qb::Value> arguments = {});

/// Does so with the class, and expects an object of that very class.
std::string made(Class *asked, const char *selector, std::vector<qb::Value> arguments = {});

#endif
