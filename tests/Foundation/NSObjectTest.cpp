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

TEST_F(NSObjectTest, ObjectsAreAlignedAsTheirClassesAsk) {
    struct alignas(256) Wide : NSString {};
    const Ref<NSString> wide = Ref<Wide>::adopt(new Wide);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(wide.get()) % alignof(Wide), 0u);
}

TEST_F(NSObjectTest, PoolsEndInAnyOrder) {
    auto outer = std::make_unique<NSAutoreleasePool>(), inner = std::make_unique<NSAutoreleasePool>();
    outer.reset();
    EXPECT_EQ(inner->parent(), &pool_);
    inner.reset();
    EXPECT_EQ(NSAutoreleasePool::defaultPool(), &pool_);
}

TEST_F(NSObjectTest, EveryObjectCanBeStreamed) {
    EXPECT_TRUE("text"_ns->conformsToProtocol(Protocol::named("OutputStreaming")));
    EXPECT_TRUE(QBNil::value()->conformsToProtocol(Protocol::named("PropertyListOutputStreaming")));
    EXPECT_FALSE("text"_ns->conformsToProtocol(Protocol::named("Streaming")));
}
