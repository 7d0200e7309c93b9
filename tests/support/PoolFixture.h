// What tests need: the whole library, bytes and texts for it, messages and clients' classes, a pool, an error
// handler, faults of the system and of memory, elements that meddle, a small stack, and the standard headers
// that many of them use.
#ifndef QBFOUNDATION_TESTS_SUPPORT_POOLFIXTURE_H
#define QBFOUNDATION_TESTS_SUPPORT_POOLFIXTURE_H

#include <QBFoundation/QBFoundation.h>

#include "support/Allocations.h"
#include "support/Bytes.h"
#include "support/ClientClass.h"
#include "support/Describe.h"
#include "support/ErrorExpectation.h"
#include "support/Faults.h"
#include "support/Meddlers.h"
#include "support/SmallStack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <clocale>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>
#include <set>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Gives each test a pool of its own and a clean error handler, and fails it when an error is left over.
class PoolFixture : public testing::Test {
protected:
    PoolFixture() {
        ERRORHANDLER = recordingErrorHandler();
        ERRORHANDLER->clearErrorStack();
        recordingErrorHandler()->raised.clear();
    }
    ~PoolFixture() override {
        EXPECT_EQ(ERRORHANDLER->errorState(), ERRORSTATE_OK)
            << ERRORHANDLER->errorStackMessagesStringWithIndent(nullptr)->cString();
        ERRORHANDLER->clearErrorStack();
    }

    NSAutoreleasePool pool_;
};

/// Does `act`, and returns what it returns, with a pool that is gone afterwards.
auto inOwnPool(auto act) {
    const NSAutoreleasePool pool;
    return act();
}

#endif
