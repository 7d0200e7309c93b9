#include "support/PoolFixture.h"

#include <set>

using NSObjectTest = PoolFixture;

TEST_F(NSObjectTest, NoClassListsASelectorTwice) {
    for (Class *cls : qb::allClasses()) {
        std::set<std::string> seen;
        for (const auto &method : cls->ownMethods()) {
            const std::string name =
                (method->isClassMethod() ? "+" : "-") + std::string(method->selector()->view());
            EXPECT_TRUE(seen.insert(name).second) << cls->nameView() << " " << name;
        }
    }
}

TEST_F(NSObjectTest, EveryObjectCanBeStreamed) {
    for (const char *name : {"OutputStreaming", "PropertyListOutputStreaming"}) {
        Protocol *const protocol = Protocol::named(name);
        for (id object : {static_cast<id>("text"_ns), static_cast<id>(NSNumber::numberWithInt(1)),
                          static_cast<id>(NSData::data()), static_cast<id>(QBNil::value())})
            EXPECT_TRUE(object->conformsToProtocol(protocol)) << name;
    }
    EXPECT_FALSE("text"_ns->conformsToProtocol(Protocol::named("Streaming")));
}
