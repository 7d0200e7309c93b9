#include "support/PoolFixture.h"
#include "support/SmallStack.h"

using DeepWalkTest = PoolFixture;

namespace {

constexpr int kDeep = 1'000'000;

using Wrap = Ref<NSObject> (*)(id inner);

Ref<NSObject> inArray(id inner) {
    return NSArray::initWith({inner, "x"_ns});
}
Ref<NSObject> inMutableArray(id inner) {
    return NSMutableArray::initWith({inner});
}
Ref<NSObject> inDictionary(id inner) {
    return NSDictionary::initWith({{"a"_ns, "x"_ns}, {"b"_ns, inner}});
}
Ref<NSObject> asKey(id inner) {
    return NSDictionary::initWith({{inner, "x"_ns}});
}
Ref<NSObject> inSet(id inner) {
    return NSSet::initWith({inner, "x"_ns});
}

// `innermost` inside `depth` containers, made by each of the functions in turn.
Ref<NSObject> nested(std::initializer_list<Wrap> wraps, int depth, id innermost) {
    Ref<NSObject> object = innermost;
    for (int i = 0; i < depth; ++i)
        object = wraps.begin()[static_cast<std::size_t>(i) % wraps.size()](object);
    return object;
}

/// An array that is equal to others when their first elements are.
class FirstArray : public NSMutableArray {
public:
    BOOL isEqual(id other) const override {
        auto *const array = qb::castOrNil<NSArray>(other);
        return array && array->count() && objectAtIndex(0)->isEqual(array->objectAtIndex(0));
    }
    Class *classObject() const override {
        static Class *const self = new Class("FirstArray", NSMutableArray::cls(), {});
        return self;
    }
};

} // namespace

TEST_F(DeepWalkTest, AMillionNestedContainersAreComparedHashedAndDestroyedOnASmallStack) {
    const std::initializer_list<Wrap> wraps = {&inMutableArray, &inDictionary, &inArray, &inSet, &asKey};
    bool isTold = false;
    ASSERT_TRUE(runOnSmallStack([&] {
        NSAutoreleasePool pool;
        const Ref<NSObject> one = nested(wraps, kDeep, "end"_ns);
        const Ref<NSObject> same = nested(wraps, kDeep, NSString::stringWith("end"));
        const Ref<NSObject> other = nested(wraps, kDeep, "END"_ns);
        EXPECT_EQ(one->hash(), same->hash());
        isTold = one->isEqual(same) && !one->isEqual(other);
    }));
    EXPECT_TRUE(isTold);
}

TEST_F(DeepWalkTest, KeysAndElementsThatAreContainersFindTheirPartners) {
    const auto list = [](const char *text) { return NSArray::arrayWithObject(NSString::stringWith(text)); };
    NSSet *const set = NSSet::setWithObjects(list("a"), list("b"), list("c"));
    EXPECT_TRUE(set->isEqual(NSSet::setWithObjects(list("c"), list("a"), list("b"))));
    EXPECT_FALSE(set->isEqual(NSSet::setWithObjects(list("c"), list("a"), list("d"))));
    NSDictionary *const table = NSDictionary::dictionaryWith({{list("a"), "1"_ns}, {list("b"), "2"_ns}});
    EXPECT_FALSE(table->isEqual(NSDictionary::dictionaryWith({{list("b"), "1"_ns}, {list("a"), "2"_ns}})));
    EXPECT_FALSE(NSArray::array()->isEqual(NSDictionary::dictionary()));
}

TEST_F(DeepWalkTest, ASubclassComparesInItsOwnWayAndNeverTooDeep) {
    const auto firstOf = [](id first, id second) {
        auto array = Ref<FirstArray>::adopt(new FirstArray);
        array->addObject(first);
        array->addObject(second);
        return Ref<NSObject>(array);
    };
    const auto chain = [&](int depth, id unseen) {
        Ref<NSObject> object = "end"_ns;
        for (int i = 0; i < depth; ++i)
            object = firstOf(NSArray::arrayWithObject(object), unseen);
        return NSArray::arrayWithObject(object);
    };
    EXPECT_TRUE(chain(3, "x"_ns)->isEqual(chain(3, "y"_ns)));
    BOOL isEqual = NO;
    ASSERT_TRUE(runOnSmallStack([&] {
        NSAutoreleasePool pool;
        isEqual = chain(100'000, "x"_ns)->isEqual(chain(100'000, "x"_ns));
    }));
    EXPECT_TRUE(isEqual);
}

TEST_F(DeepWalkTest, ContainersThatHoldThemselvesAreComparedToAnEnd) {
    const auto loop = [](id last) {
        NSMutableArray *const outer = NSMutableArray::array();
        outer->addObject(NSArray::arrayWithObjects(outer, outer));
        outer->addObject(last);
        return outer;
    };
    NSMutableArray *const one = loop("a"_ns);
    NSMutableArray *const same = loop("a"_ns);
    NSMutableArray *const other = loop("b"_ns);
    EXPECT_TRUE(one->isEqual(same));
    EXPECT_FALSE(one->isEqual(other));
    for (NSMutableArray *array : {one, same, other})
        array->removeAllObjects();
}
