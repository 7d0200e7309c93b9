#include "support/PoolFixture.h"

using DeepWalkTest = PoolFixture;

constexpr int kDeep = 1'000'000;

// `innermost` inside `depth` containers of all kinds in turn.
static Ref<NSObject> nested(int depth, id innermost) {
    Ref<NSObject> object = innermost;
    for (int i = 0; i < depth; i += 5) {
        object = NSMutableArray::initWith({object.get()});
        object = NSDictionary::initWith({{"a"_ns, "x"_ns}, {"b"_ns, object.get()}});
        object = NSArray::initWith({object.get(), "x"_ns});
        object = NSSet::initWith({object.get(), "x"_ns});
        object = NSDictionary::initWith({{object.get(), "x"_ns}});
    }
    return object;
}

TEST_F(DeepWalkTest, AMillionNestedContainersAreComparedHashedAndDestroyedOnASmallStack) {
    bool isTold = false;
    ASSERT_TRUE(runOnSmallStack([&] {
        const Ref<NSObject> one = nested(kDeep, "end"_ns);
        const Ref<NSObject> same = nested(kDeep, NSString::stringWith("end"));
        const Ref<NSObject> other = nested(kDeep, "END"_ns);
        EXPECT_EQ(one->hash(), same->hash());
        isTold = one->isEqual(same) && !one->isEqual(other);
    }));
    EXPECT_TRUE(isTold);
}

TEST_F(DeepWalkTest, NestedArraysAreDestroyedWithoutMemory) {
    for (const auto &[depth, leaves, failures] :
         {std::tuple(kDeep, 0u, 0u), std::tuple(100'000, 9u, 0u), std::tuple(20'000, 64u, 1u)}) {
        Ref<NSObject> object = NSObject::init();
        for (int i = 0; i < depth; ++i) {
            const auto array = NSMutableArray::initWithCapacity(leaves + 1);
            while (array->count() < leaves)
                array->addObject(NSObject::init().get());
            array->addObject(object);
            object = array;
        }
        EXPECT_TRUE(runOnSmallStack([&, failures = failures] {
            const AllocationFault fault(/*skip=*/0, failures);
            object = nullptr;
        })) << leaves;
    }
}

namespace {

struct Owner : NSObject {
    struct Part : NSObject {
        explicit Part(Owner *itsOwner) : owner(itsOwner) { ++count; }
        ~Part() override {
            --count;
            const Ref<Owner> inUse = owner;
        }
        static inline int count = 0;
        Owner *const owner;
    };

    ~Owner() override {
        const int others = part ? Part::count - 1 : 0;
        part = nullptr;
        EXPECT_EQ(Part::count, others);
    }

    Ref<Part> part = Ref<Part>::adopt(new Part(this));
    Ref<NSObject> next;
};

} // namespace

TEST_F(DeepWalkTest, PartsGoBeforeTheirOwnerWhateverIsAroundIt) {
    for (const int depth : {0, 100, 20'000}) { // where it has to wait, or somewhat above
        Ref<Owner> owner = Ref<Owner>::adopt(new Owner);
        if (depth > 100)
            owner->part = nullptr;
        const id other = new Owner::Part(owner); // goes first, and uses one that may be waiting
        Ref<NSObject> object = NSArray::initWith({other, owner.get()});
        other->release();
        owner = nullptr;
        for (int i = 0; i < depth; ++i)
            object = NSArray::initWith({object.get()});
        object = nullptr;
        EXPECT_EQ(Owner::Part::count, 0) << depth;
    }
    EXPECT_TRUE(runOnSmallStack([] {
        Ref<Owner> chain;
        for (int i = 0; i < kDeep; ++i) {
            const Ref<NSObject> rest = chain;
            chain = Ref<Owner>::adopt(new Owner);
            chain->part = nullptr;
            chain->next = rest;
        }
    }));
    EXPECT_EQ(Owner::Part::count, 0);
}

TEST_F(DeepWalkTest, KeysAndElementsThatAreContainersFindTheirPartners) {
    const auto list = [](const char *text) { return NSArray::arrayWithObject(NSString::stringWith(text)); };
    NSSet *const set = NSSet::setWithObjects(list("a"), list("b"), list("c"));
    EXPECT_TRUE(set->isEqual(NSSet::setWithObjects(list("c"), list("a"), list("b"))));
    EXPECT_FALSE(set->isEqual(NSSet::setWithObjects(list("c"), list("a"), list("d"))));
    NSDictionary *const table = NSDictionary::dictionaryWith({{list("a"), "1"_ns}, {list("b"), "2"_ns}});
    EXPECT_TRUE(table->isEqual(NSDictionary::dictionaryWith({{list("b"), "2"_ns}, {list("a"), "1"_ns}})));
    EXPECT_FALSE(table->isEqual(NSDictionary::dictionaryWith({{list("b"), "1"_ns}, {list("a"), "2"_ns}})));
    EXPECT_FALSE(NSArray::array()->isEqual(NSDictionary::dictionary()));
}

TEST_F(DeepWalkTest, TablesAreComparedWhateverHasGoneFromThem) {
    for (unsigned kept = 0; kept < 16; ++kept) {
        NSMutableDictionary *const all = NSMutableDictionary::dictionary(), *const rest = all->mutableCopy()
                                                                                              .autorelease();
        for (const int i : {0, 1, 2, 3})
            for (NSMutableDictionary *const table : {all, kept >> i & 1 ? rest : all})
                table->setObjectForKey(number(i), number(i)->stringValue());
        for (const int i : {0, 1, 2, 3})
            if (!(kept >> i & 1))
                all->removeObjectForKey(number(i)->stringValue());
        EXPECT_TRUE(all->isEqual(rest) && rest->isEqual(all)) << kept;
        rest->setObjectForKey("x"_ns, "3"_ns);
        EXPECT_FALSE(all->isEqual(rest) || rest->isEqual(all)) << kept;
    }
}

// Forty elements and entries, one of them in the middle.
static NSMutableArray *longArray(id middle) {
    NSMutableArray *const array = letters("0123456789abcdefghijklmnopqrstuvwxyzABCD");
    array->replaceObjectAtIndex(20, middle);
    return array;
}
static NSMutableDictionary *wideTable(id middle) {
    NSMutableDictionary *const table = NSMutableDictionary::dictionary();
    table->setObjectForKeys("x"_ns, longArray("middle"_ns));
    table->setObjectForKey(middle, "middle"_ns);
    return table;
}

TEST_F(DeepWalkTest, DifferentContainersDifferInTheirHashes) {
    constexpr std::size_t kMany = 1000;
    using Make = id (*)(id number);
    const std::pair<const char *, Make> rows[] = {
        {"array", [](id number) -> id { return NSArray::arrayWithObjects("x"_ns, number); }},
        {"order", [](id number) -> id { return NSArray::arrayWithObjects(number, "x"_ns); }},
        {"keys", [](id number) -> id { return NSDictionary::dictionaryWithObjectForKey("x"_ns, number); }},
        {"set", [](id number) -> id { return NSSet::setWithObjects("x"_ns, number); }},
        {"middle", [](id number) -> id { return longArray(number); }},
        {"wide", [](id number) -> id { return wideTable(number); }},
        {"inside", [](id number) -> id { return NSArray::arrayWithObjects(wideTable(longArray(number))); }},
    };
    std::set<std::uint32_t> hashes;
    std::size_t expected = 0;
    for (const auto &[name, make] : rows) {
        for (std::size_t i = 0; i < kMany; ++i)
            hashes.insert(make(number(static_cast<int>(i)))->hash());
        EXPECT_GE(hashes.size(), expected += kMany - 10) << name;
    }
}

// Each level doubles the ways to the innermost one.
TEST_F(DeepWalkTest, ContainersThatSeveralHoldAreComparedOnce) {
    const auto shared = [](id inner) {
        for (int level = 0; level < 100; ++level)
            inner = level % 2 ? static_cast<id>(NSArray::arrayWithObjects(inner, inner))
                              : NSDictionary::dictionaryWith({{"a"_ns, inner}, {"b"_ns, inner}});
        return inner;
    };
    const id one = shared("end"_ns);
    EXPECT_TRUE(one->isEqual(shared("end"_ns)) && one->hash() == shared("end"_ns)->hash());
    EXPECT_FALSE(one->isEqual(shared("END"_ns)));
}

/// Equal to those that have the same "id", whatever else they have.
struct Record : ClientClass<Record, NSMutableDictionary, "Record"> {
    BOOL isEqual(id other) const override { return hash() == other->hash(); }
    std::uint32_t hash() const override { return objectForKey("id"_ns)->hash(); }
};

/// Equal to other arrays when their first elements are.
struct FirstArray : ClientClass<FirstArray, NSMutableArray, "FirstArray"> {
    BOOL isEqual(id other) const override {
        auto *const array = qb::castOrNil<NSArray>(other);
        return array && array->count() && objectAtIndex(0)->isEqual(array->objectAtIndex(0));
    }
};

TEST_F(DeepWalkTest, EqualContainersOfAnyClassesHaveOneHash) {
    const auto list = [](std::uint32_t count, id last) {
        NSMutableArray *const array = NSMutableArray::array();
        while (array->count() < count)
            array->addObject(QBNil::value());
        array->addObject(last);
        return array;
    };
    const auto record = [](id unseen) {
        const auto made = Ref<Record>::adopt(new Record);
        made->setObjectForKey("one"_ns, "id"_ns);
        made->setObjectForKey("x"_ns, unseen);
        return NSArray::arrayWithObject(made);
    };
    NSMutableArray *const many = NSMutableArray::array(); // more than count in a set inside another container
    for (int i = 0; i < 5000; ++i)
        many->addObject(number(i));
    const auto setOf = [](NSArray *array) { return NSArray::arrayWithObject(NSSet::setWithArray(array)); };
    const auto first = Ref<FirstArray>::adopt(new FirstArray);
    first->setArray(list(3, NSNumber::numberWithDouble(7)));
    const id seven = number(7), inner = NSDictionary::dictionaryWith({{"a"_ns, first.get()}});
    const id key = NSMutableString::stringWith("a");
    const std::tuple<id, id> rows[] = {
        {list(3, seven)->copy().autorelease(), first.get()},
        {list(50, seven), list(50, NSNumber::numberWithLongLong(7))},
        {NSArray::arrayWithObjects("a"_ns, list(3, seven)), NSArray::arrayWithObjects(key, first.get())},
        {NSSet::setWithObjects("a"_ns, seven), NSMutableSet::setWithObjects(seven, key)},
        {NSDictionary::dictionaryWith({{"a"_ns, seven}, {"b"_ns, list(3, seven)}}),
         NSMutableDictionary::dictionaryWith({{"b"_ns, first.get()}, {key, seven}})},
        {NSDictionary::dictionaryWith({{"a"_ns, list(3, seven)}}), inner},
        {record("a"_ns), record("b"_ns)},
        {setOf(many), setOf(many->reverseObjectEnumerator()->allObjects())},
    };
    for (const auto &[a, b] : rows) {
        EXPECT_TRUE(a->isEqual(b)) << *a;
        EXPECT_EQ(a->hash(), b->hash()) << *a;
    }
}

TEST_F(DeepWalkTest, ASubclassComparesInItsOwnWayAndNeverTooDeep) {
    const auto chain = [](int depth, id unseen) {
        Ref<NSObject> object = "end"_ns;
        for (int i = 0; i < depth; ++i) {
            const auto array = Ref<FirstArray>::adopt(new FirstArray);
            array->setArray(NSArray::arrayWithObjects(NSArray::arrayWithObject(object), unseen));
            object = array;
        }
        return NSArray::arrayWithObject(object);
    };
    EXPECT_TRUE(chain(3, "x"_ns)->isEqual(chain(3, "y"_ns)));
    BOOL isEqual = NO;
    ASSERT_TRUE(runOnSmallStack([&] { isEqual = chain(100'000, "x"_ns)->isEqual(chain(100'000, "x"_ns)); }));
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

TEST_F(DeepWalkTest, HashesAndComparisonsMayTakeNestedContainersOut) {
    meddle([](auto &it, auto &other) { it.array->isEqual(other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->isEqual(other.dictionary); });
    meddle([](auto &it, auto &other) { it.set->isEqual(other.set); });
    meddle([](auto &, auto &other) { other.array->hash(); });
    meddle([](auto &, auto &other) { other.dictionary->hash(); });
    meddle([](auto &, auto &other) { other.set->hash(); });
}
