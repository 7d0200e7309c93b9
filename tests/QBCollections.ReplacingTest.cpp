#include "support/PoolFixture.h"

using ReplacingTest = PoolFixture;

TEST_F(ReplacingTest, ReachesIntoContainersWhenItIsRecursive) {
    NSArray *const inner = NSArray::arrayWithObjects("x"_ns, "y"_ns);
    NSDictionary *const map = NSDictionary::dictionaryWith({{"x"_ns, "x"_ns}, {"list"_ns, inner}});
    NSArray *const list = NSArray::arrayWithObjects("x"_ns, map, inner, "z"_ns);
    EXPECT_EQ(describe(list->asArrayWith("x"_ns, "-"_ns)), "(-, {x = -; list = (-, y); }, (-, y), z)");
    EXPECT_EQ(describe(list->asArrayWith("x"_ns, "-"_ns, NO)), "(-, {x = x; list = (x, y); }, (x, y), z)");
    EXPECT_EQ(describe(list), "(x, {x = x; list = (x, y); }, (x, y), z)");
    EXPECT_EQ(describe(map->asDictionaryWith("x"_ns, "-"_ns)), "{x = -; list = (-, y); }");
    EXPECT_EQ(describe(map->asDictionaryWith(inner, "-"_ns, NO)), "{x = x; list = -; }");

    NSMutableDictionary *const changed = map->mutableCopy().autorelease();
    changed->replace("y"_ns, "-"_ns, YES);
    EXPECT_EQ(describe(changed), "{x = x; list = (x, -); }");
    const id changedList = changed->objectForKey("list"_ns);
    EXPECT_TRUE(changedList != inner && changedList->isKindOfClass(NSMutableArray::cls()));

    NSMutableString *const part = NSMutableString::stringWith("k");
    NSMutableDictionary *const lost = NSMutableDictionary::dictionary();
    lost->setObjectForKey("v"_ns, NSArray::arrayWithObject(part));
    part->setString("changed"_ns); // so that the entry can't be found
    lost->replace("x"_ns, "-"_ns, NO);
    EXPECT_EQ(lost->count(), 1u);
}

TEST_F(ReplacingTest, NilReplacesNothingAndChangesNothing) {
    NSMutableArray *const list = NSMutableArray::arrayWithObjects("a"_ns, NSArray::arrayWithObject("x"_ns));
    EXPECT_REASON(list->replace("x"_ns, nullptr, YES),
                  "replace:with:recursive: must have an object that is not nil.");
    list->replace("y"_ns, nullptr, YES);
    EXPECT_EQ(describe(list), "(a, (x))");
    NSEnumerator *const next = list->objectEnumerator();
    list->replace("a"_ns, "b"_ns, NO); // no other objects than before
    EXPECT_EQ(describe(next->allObjects()), "(b, (x))");
}

TEST_F(ReplacingTest, DepthHasAnEndBeforeTheStackHas) {
    EXPECT_TRUE(runOnSmallStack([] {
        EXPECT_ERROR(900003, "256", EXPECT_EQ(arraysInArrays(257)->asArrayWith("x"_ns, "y"_ns), nullptr));
        EXPECT_NE(arraysInArrays(256)->asArrayWith("x"_ns, "y"_ns),
                  nullptr); // nothing is left of the failure
    }));
    // Each level would hold twice as many values as the one above it.
    NSMutableDictionary *const own = NSMutableDictionary::dictionaryWith({{"a"_ns, "x"_ns}});
    own->setObjectForKey(own, "b"_ns);
    own->setObjectForKey(own, "c"_ns);
    EXPECT_ERROR(900003, "256", own->replace("x"_ns, "y"_ns, YES));
    EXPECT_EQ(describe(own->objectForKey("a"_ns)), "x");
    own->removeAllObjects();
}

TEST_F(ReplacingTest, ElementsOwnOperationsMayChangeWhatIsWalkedOrPassed) {
    meddle([](auto &it, auto &other) { it.array->replace(other.single, other.array, /*recursive=*/YES); });
    meddle([](auto &it, auto &other) { it.array->asArrayWith(other.single, other.set); });
    meddle([](auto &it, auto &other) { it.dictionary->asDictionaryWith(other.single, other.set); });
}
