#include "support/PoolFixture.h"

using NSSetTest = PoolFixture;

static std::string elements(NSSet *set) {
    return describe(set->allObjects());
}

TEST_F(NSSetTest, KeepsTheFirstOfEqualElementsInOrder) {
    NSString *const first = NSString::stringWith("b");
    NSSet *const set = NSSet::setWithObjects(first, "a"_ns, NSString::stringWith("b"), "c"_ns);
    EXPECT_EQ(elements(set), "(b, a, c)");
    EXPECT_EQ(set->member("b"_ns), first);
    EXPECT_EQ(set->anyObject(), first);
    EXPECT_THROW(NSSet::setWithObjects("a"_ns, nullptr), InvalidArgumentException);
}

TEST_F(NSSetTest, RelationsIgnoreTheOrder) {
    NSSet *const ab = NSSet::setWithObjects("a"_ns, "b"_ns);
    NSSet *const abc = NSSet::setWithArray(NSArray::arrayWithObjects("a"_ns, "b"_ns, "c"_ns));
    EXPECT_TRUE(ab->isSubsetOfSet(abc) && !abc->isSubsetOfSet(ab) && !ab->isSubsetOfSet(nullptr));
    EXPECT_TRUE(ab->intersectsSet(abc) && NSSet::set()->isSubsetOfSet(nullptr));
    EXPECT_FALSE(abc->intersectsSet(NSSet::setWithObject("x"_ns)));
    EXPECT_EQ(elements(ab->setByAddingObject("x"_ns)->setByAddingObjectsFromSet(abc)), "(a, b, x, c)");
}

TEST_F(NSSetTest, MutableSetsTakeOthersInOutAndTogether) {
    NSMutableSet *const set = NSMutableSet::setWithCapacity(4);
    set->addObjectsFromArray(NSArray::arrayWithObjects("a"_ns, "b"_ns, "a"_ns));
    set->unionSet(NSSet::setWithObjects("c"_ns, "b"_ns));
    NSSet *const copy = set->copy().autorelease();
    set->minusSet(NSSet::setWithObjects("x"_ns, "a"_ns));
    EXPECT_EQ(elements(set), "(b, c)");
    set->addObject("a"_ns);
    set->intersectSet(NSSet::setWithObjects("a"_ns, "c"_ns));
    EXPECT_EQ(elements(set), "(c, a)");
    set->setSet(copy);
    set->removeObject("b"_ns);
    EXPECT_EQ(elements(set), "(a, c)");
    set->minusSet(set);
    EXPECT_EQ(elements(set), "()");
    EXPECT_EQ(elements(copy), "(a, b, c)"); // a copy stays as it was
}

TEST_F(NSSetTest, CopiesOfTheElementsAreTakenOnlyWhenAsked) {
    NSMutableString *const text = NSMutableString::stringWith("a");
    NSSet *const set = NSSet::setWithSet(NSSet::setWithObject(text));
    EXPECT_EQ(NSSet::initWithSet(set, /*copyItems=*/NO)->anyObject(), text);
    const Ref<NSSet> copies = NSMutableSet::initWithSet(set, /*copyItems=*/YES);
    text->appendString("b"_ns);
    EXPECT_EQ(elements(copies), "(a)");
    set->makeObjectsPerformSelector("appendString:"_sel, "c"_ns);
    EXPECT_EQ(describe(set->objectEnumerator()->allObjects()), "(abc)");
    const Ref<NSObject> copy = set->mutableCopy();
    NSSet::setWithObject(copy)->makeObjectsPerformSelector("removeAllObjects"_sel);
    EXPECT_EQ(answer(copy, "allObjects"), "()");
}

TEST_F(NSSetTest, EnumeratorsBegunByAComparisonNoticeWhatFollows) {
    struct Key : NSObject {
        std::function<void()> onComparison = [] {};
        BOOL isEqual(id) const override { return onComparison(), NO; }
        std::uint32_t hash() const override { return 5; }
        Ref<NSObject> copyWithZone(void *) const override { return self(); }
    };
    const Ref<Key> key = Ref<Key>::adopt(new Key), first = Ref<Key>::adopt(new Key);
    NSMutableSet *const set = NSMutableSet::setWithObjects(first, "a"_ns);
    NSMutableDictionary *const dictionary =
        NSMutableDictionary::dictionaryWith({{first, number(1)}, {"a"_ns, number(2)}});
    NSSet *const other = NSSet::setWithObjects(first, key);
    NSEnumerator *it = nullptr;
    const auto begin = [&it](auto *container) { return (it = container->objectEnumerator())->nextObject(); };
    const auto expectNoticed = [&](auto change, std::function<void()> onComparison) {
        key->onComparison = std::move(onComparison);
        try {
            change();
        } catch (id) {
        }
        EXPECT_THROW(it->nextObject(), InvalidUseOfMethodException);
    };
    expectNoticed([=] { set->setSet(other); }, [=] { throw begin(set); });
    expectNoticed([=] { set->addObject(key); }, [=] { set->removeObject(first), begin(set); });
    expectNoticed([=] { dictionary->setObjectForKey(number(3), key); },
                  [=] { dictionary->removeObjectForKey(first), begin(dictionary); });
    EXPECT_EQ(set->count(), 2u); // what was to be replaced was back
}

TEST_F(NSSetTest, ElementsOwnOperationsMayChangeWhatIsWalkedOrPassed) {
    meddle([](auto &it, auto &) { it.set->makeObjectsPerformSelector("stringValue"_sel); });
    meddle([](auto &it, auto &other) { it.set->makeObjectsPerformSelector("isEqual:"_sel, other.single); });
    meddle([](auto &it, auto &) { NSSet::setWithArray(it.array); });
    meddle([](auto &it, auto &other) { it.set->setByAddingObject(other.single); });
    meddle([](auto &it, auto &other) { it.set->setByAddingObjectsFromArray(other.array); });
    meddle([](auto &it, auto &other) { it.set->addObjectsFromArray(other.array); });
    meddle([](auto &it, auto &other) { it.set->unionSet(other.set); });
    meddle([](auto &it, auto &other) { it.set->removeObject(other.single); });
}
