#include "support/PoolFixture.h"

using NSArrayTest = PoolFixture;

static std::string joined(NSArray *array) {
    return array ? std::string(array->componentsJoinedByString(nullptr)->view()) : "nil";
}

static int throwing(id, id, void *calls) {
    if (++*static_cast<int *>(calls) == 7)
        throw InvalidArgumentException("enough");
    return 1;
}

static int emptying(id, id, void *array) {
    static_cast<NSMutableArray *>(array)->removeAllObjects();
    return 0;
}

static int random(id, id, void *) {
    static std::mt19937 generator(1);
    return static_cast<int>(generator() % 3) - 1;
}

TEST_F(NSArrayTest, InsertingIsNotAddingOfASubclass) {
    // Adds nothing that it has.
    struct Unique : NSMutableArray {
        void addObject(id object) override {
            if (!containsObject(object))
                NSMutableArray::addObject(object);
        }
    };
    const Ref<Unique> array = Ref<Unique>::adopt(new Unique);
    array->addObject("x"_ns);
    array->insertObject("x"_ns, 1);
    array->insertObject("y"_ns, 1);
    EXPECT_EQ(joined(array), "xyx");
}

TEST_F(NSArrayTest, MoreObjectsThan32BitsCountAreRefused) {
    const id one = "x"_ns;
    const std::span<const id> many(&one, static_cast<std::size_t>((1ULL << 32) + 1)); // on 32 bits one
    if (many.size() > 1) {
        const char *const reason = "NSArray initWithObjects:count: must have less than 2^32 objects.";
        EXPECT_REASON(NSArray::initWith(many), reason);
        EXPECT_REASON(NSArray::initOfClass(NSMutableArray::cls(), many), reason);
        EXPECT_REASON(NSMutableArray::initWith(many),
                      "NSMutableArray initWithObjects:count: must have less than 2^32 objects.");
        EXPECT_THROW(NSSet::initWith(many), InvalidArgumentException);
        EXPECT_THROW(NSMutableSet::initWith(many), InvalidArgumentException);
    }
}

TEST_F(NSArrayTest, FindsEqualAndIdenticalElementsInRanges) {
    NSString *const second = NSString::stringWith("a");
    NSArray *const array = NSArray::arrayWithObjects("a"_ns, "b"_ns, second, "c"_ns);
    EXPECT_EQ(array->indexOfObject(second), 0u);
    EXPECT_EQ(array->indexOfObjectIdenticalTo(second), 2u);
    EXPECT_EQ(array->indexOfObjectIdenticalTo(second, NSMakeRange(1, 2)), 2u);
    EXPECT_EQ(array->indexOfObject("a"_ns, NSMakeRange(1, 3)), 2u);
    const Ref<NSMutableArray> rest = NSMutableArray::initWithArray(array, /*copyItems=*/NO);
    rest->removeObjectIdenticalTo(second, NSMakeRange(0, 2));
    rest->removeObjectIdenticalTo(rest->objectAtIndex(0), NSMakeRange(0, 2));
    EXPECT_EQ(joined(rest), "bac");
    EXPECT_EQ(array->indexOfObject("a"_ns, NSMakeRange(1, 1)), NSNotFound);
    EXPECT_EQ(describe(array->firstObjectCommonWithArray(letters("xcb"))), "b");
    EXPECT_REASON(array->indexOfObject("a"_ns, NSMakeRange(UINT32_MAX, UINT32_MAX)),
                  "NSArray indexOfObject:inRange: must have a range inside the 4 elements.");
    EXPECT_REASON(array->objectAtIndex(4), "NSArray objectAtIndex: must have an index below 4, not 4.");
}

TEST_F(NSArrayTest, MakersMakeArraysOfTheClassAsked) {
    const id elements[] = {"a"_ns};
    const qb::Value values[] = {"a"_ns};
    for (Class *asked : {NSArray::cls(), NSMutableArray::cls()}) {
        for (const std::string maker : {"arrayWith", "initWith"}) {
            EXPECT_EQ(made(asked, (maker + "Objects:count:").c_str(), {&elements[0], 1}), "(a)");
            EXPECT_EQ(made(asked, (maker + "Objects:").c_str(), {qb::ArgList(values, 1)}), "(a)");
            EXPECT_EQ(made(asked, (maker + "Array:").c_str(), {letters("a")}), "(a)");
        }
        EXPECT_EQ(made(asked, "initWithArray:copyItems:", {letters("a"), YES}), "(a)");
        EXPECT_EQ(made(asked, "arrayWithObject:", {"a"_ns}) + made(asked, "init"), "(a)()");
    }
    struct Begun : ClientClass<Begun, NSMutableArray, "Begun"> {
        Begun() { addObject(NSString::stringWith("z")); }
    };
    EXPECT_EQ(made(Begun::cls(), "arrayWithObject:", {"a"_ns}), "(z, a)");
}

TEST_F(NSArrayTest, DerivesFurtherArraysAndTexts) {
    NSArray *const abc = letters("abc");
    NSArray *const mixed = NSArray::arrayWithObjects("a"_ns, number(-1), "b"_ns);
    EXPECT_EQ(mixed->componentsJoinedByString(", "_ns)->view(), "a, -1, b");
    id buffer[3] = {};
    abc->getObjects(buffer, NSMakeRange(1, 2));
    EXPECT_EQ(describe(buffer[0]) + describe(buffer[1]), "bc");
    abc->getObjects(buffer);
    EXPECT_EQ(describe(buffer[0]) + describe(buffer[2]), "ac");
    NSMutableArray *const lists = NSMutableArray::arrayWithObjects(letters("a"), letters("b"));
    const Ref<NSArray> copies = NSArray::initWithArray(lists, /*copyItems=*/YES);
    lists->makeObjectsPerformSelector("addObject:"_sel, "x"_ns);
    lists->makeObjectsPerformSelector("removeLastObject"_sel);
    lists->makeObjectsPerformSelector("addObject:"_sel, "y"_ns);
    EXPECT_EQ(describe(lists), "((a, y), (b, y))");
    EXPECT_EQ(describe(copies.get()), "((a), (b))");
}

TEST_F(NSArrayTest, StringsAreSortedAsTheirComparisonSays) {
    Random random;
    const std::string ends[] = {std::string(1, '\0'), "a", "b", "\xFF"};
    for (const std::size_t count : {0, 1, 2, 13, 300, 3000}) {
        Strings texts;
        for (std::size_t i = 0; i < count; ++i) // long common beginnings, and NULs
            texts.push_back(std::string(random.below(4) ? random.below(30) : 0, 'p') +
                            randomText(random, random.below(4), ends));
        NSMutableArray *const array = NSMutableArray::array();
        for (std::size_t i = 0; i < count; ++i)
            array->addObject(i % 3 ? NSString::stringWith(texts[i]) : NSMutableString::stringWith(texts[i]));
        NSArray *const generic = array->sortedArrayUsingFunction(
            [](id a, id b, void *) { return static_cast<int>(a->compare(b)); }, nullptr);
        array->sortUsingSelector("compare:"_sel);
        std::stable_sort(texts.begin(), texts.end());
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_EQ(static_cast<NSString *>(array->objectAtIndex(i))->view(), texts[i]);
            ASSERT_EQ(array->objectAtIndex(i),
                      generic->objectAtIndex(i)); // the very same: both keep the order
        }
    }
}

TEST_F(NSArrayTest, FailingAndFoolishComparisonsLoseNothing) {
    NSMutableArray *const array = letters("hgfedcba");
    int calls = 0;
    EXPECT_THROW(array->sortUsingFunction(&throwing, &calls), InvalidArgumentException);
    EXPECT_EQ(joined(array), "hgfedcba");
    array->addObject(number(1));
    EXPECT_THROW(array->sortUsingSelector("compare:"_sel),
                 InvalidArgumentException); // strings against a number
    EXPECT_EQ(joined(array), "hgfedcba1");
    NSMutableArray *const many = NSMutableArray::array();
    for (int i = 0; i < 1000; ++i)
        many->addObject(number(i));
    many->sortUsingFunction(&random, nullptr);
    many->sortUsingSelector("compare:"_sel);
    EXPECT_EQ(describe(many->subarrayWithRange(NSMakeRange(997, 3))), "(997, 998, 999)");
    EXPECT_REASON(array->sortUsingFunction(&emptying, array),
                  "NSMutableArray sortUsingSelector: must have a comparison that does not change the array.");
}

TEST_F(NSArrayTest, MutableArraysDoWhatAVectorDoes) {
    std::mt19937 generator(4);
    NSMutableArray *const array = NSMutableArray::array();
    std::string expected;
    const auto below = [&](std::size_t end) { return static_cast<std::uint32_t>(generator() % end); };
    for (int step = 0; step < 4000; ++step) {
        const std::uint32_t place = generator() % 4 == 0 ? 0 : below(expected.size() + 1);
        const std::uint32_t length = below(std::min<std::size_t>(expected.size() - place, 5) + 1);
        const std::string one(1, static_cast<char>('a' + generator() % 6));
        NSString *const object = NSString::stringWith(one);
        switch (generator() % 6) {
        case 0:
        case 1:
            array->insertObject(object, place);
            expected.insert(place, one);
            break;
        case 2:
            array->removeObjectsInRange(NSMakeRange(place, length));
            expected.erase(place, length);
            break;
        case 3: // a part of itself over another
            array->replaceObjectsInRange(NSMakeRange(place, length), expected.size() < 40 ? array : nullptr);
            expected.replace(place, length, expected.size() < 40 ? std::string(expected) : "");
            break;
        case 4:
            array->removeObject(object, NSMakeRange(place, length));
            for (std::size_t i = place + length; i-- > place;)
                if (expected[i] == one[0])
                    expected.erase(i, 1);
            break;
        default:                           // a queue
            for (int i = 0; i < 40; ++i) { // in at one end, and out at the other one
                const bool isBackwards = step % 7 == 0;
                const auto last = static_cast<std::uint32_t>(expected.size());
                array->insertObject(object, isBackwards ? 0 : last);
                expected.insert(isBackwards ? 0 : last, one);
                const std::uint32_t next = i % 8 == 0 ? below(expected.size()) : isBackwards ? last : 0;
                array->removeObjectAtIndex(next);
                expected.erase(next, 1);
            }
            if (generator() % 20 == 0) {
                array->removeObjectsInArray(letters("ay"));
                std::erase_if(expected, [](char letter) { return letter == 'a' || letter == 'y'; });
            }
        }
        ASSERT_EQ(joined(array), expected) << "step " << step;
    }
}

TEST_F(NSArrayTest, RoomInFrontServesWhereThereIsNoMemory) {
    NSMutableArray *const array = NSMutableArray::arrayWithCapacity(100);
    while (array->count() < 100)
        array->addObject("x"_ns);
    for (int i = 0; i < 10; ++i)
        array->removeFirstObject();
    {
        const AllocationFault fault(/*skip=*/0, /*times=*/0);
        while (array->count() < 100)
            array->addObject("y"_ns);
    }
    EXPECT_EQ(joined(array), std::string(90, 'x') + std::string(10, 'y'));
}

TEST_F(NSArrayTest, ADestructorMayComeBackToItsArray) {
    // Comes back to the array that owned it when it goes.
    struct Returner : NSObject {
        explicit Returner(NSMutableArray *array) : array_(array) {}
        ~Returner() override { array_->addObject("z"_ns); }
        NSMutableArray *array_;
    };
    NSMutableArray *const array = letters("ab");
    const auto addReturner = [array] { array->addObject(Ref<Returner>::adopt(new Returner(array)).get()); };
    addReturner();
    array->removeObjectIdenticalTo(array->lastObject());
    EXPECT_EQ(joined(array), "abz");
    addReturner();
    array->setArray(letters("c"));
    EXPECT_EQ(joined(array), "cz");
}

TEST_F(NSArrayTest, NilAndWrongIndexesThrow) {
    NSMutableArray *const array = letters("ab");
    EXPECT_THROW(array->addObject(nullptr), InvalidArgumentException);
    EXPECT_THROW(array->removeObjectAtIndex(2), NSRangeException);
    EXPECT_THROW(array->exchangeObjectAtIndex(0, 2), NSRangeException);
    EXPECT_EQ(joined(array), "ab");
    array->exchangeObjectAtIndex(0, 1);
    array->replaceObjectsInRange(NSMakeRange(1, 0), letters("xyz"), NSMakeRange(1, 2));
    EXPECT_EQ(joined(array), "byza");
}

TEST_F(NSArrayTest, EnumerationsNoticeWhatComesAndLeavesUntilTheirEnd) {
    using Change = void (*)(NSMutableArray *);
    const std::tuple<const char *, Change, const char *, const char *> rows[] = {
        {"add", [](auto *array) { array->addObject("x"_ns); }, nullptr, nullptr},
        {"remove last", [](auto *array) { array->removeLastObject(); }, nullptr, nullptr},
        {"remove all", [](auto *array) { array->removeAllObjects(); }, nullptr, nullptr},
        {"sort", [](auto *array) { array->sortUsingSelector("compare:"_sel); }, nullptr, nullptr},
        {"replace", [](auto *array) { array->replaceObjectAtIndex(1, "x"_ns); }, "(x, c)", "(x, a)"},
        {"exchange", [](auto *array) { array->exchangeObjectAtIndex(0, 2); }, "(b, a)", "(b, c)"},
    };
    constexpr const char *kReason = "NSArray nextObject must have an array that was not changed meanwhile.";
    for (const auto &[name, change, ahead, back] : rows)
        for (const bool isReverse : {false, true})
            for (const int steps : {1, 3, 4}) {
                SCOPED_TRACE(std::string(name) + std::to_string(steps));
                const char *const rest = isReverse ? back : ahead;
                NSMutableArray *const array = letters("abc");
                NSEnumerator *const it =
                    isReverse ? array->reverseObjectEnumerator() : array->objectEnumerator();
                for (int i = 0; i < steps; ++i)
                    it->nextObject();
                change(array);
                if (steps < 4 && !rest) {
                    EXPECT_REASON(it->nextObject(), kReason);
                } else {
                    EXPECT_EQ(describe(it->allObjects()), steps == 1 ? rest : "()");
                }
            }
}

TEST_F(NSArrayTest, ElementsOwnOperationsMayChangeWhatIsWalkedOrPassed) {
    meddle([](auto &it, auto &other) {
        const id found = it.array->firstObjectCommonWithArray(other.array);
        EXPECT_TRUE(!found || found->retainCount() != 0);
    });
    meddle([](auto &it, auto &other) { it.array->indexOfObject(other.single); });
    meddle([](auto &it, auto &) { it.array->makeObjectsPerformSelector("stringValue"_sel); });
    meddle([](auto &it, auto &other) { it.array->makeObjectsPerformSelector("isEqual:"_sel, other.single); });
    meddle([](auto &it, auto &other) { it.array->removeObjectsInArray(other.array); });
    meddle([](auto &, auto &other) { NSArray::initWithArray(other.array, /*copyItems=*/YES); });
}

TEST_F(NSArrayTest, WhatReplacesAnElementWhileOthersAreAskedIsNotRemoved) {
    struct Replacer : NSObject {
        BOOL isEqual(id other) const override {
            if (other == array->lastObject())
                for (int i = 0; i < 2; ++i) // the second one gets the element's memory, if that is free
                    array->replaceObjectAtIndex(0, NSString::initWith("new").get());
            return YES;
        }
        NSMutableArray *array = letters("abc");
    };
    const auto replacer = Ref<Replacer>::adopt(new Replacer);
    replacer->array->replaceObjectAtIndex(0, NSString::initWith("old").get());
    replacer->array->removeObject(replacer);
    EXPECT_EQ(describe(replacer->array), "(new)");
}
