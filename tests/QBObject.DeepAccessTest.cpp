#include "support/PoolFixture.h"

using QBObjectDeepAccessTest = PoolFixture;

static NSMutableDictionary *tree() {
    NSDictionary *const leaf = NSDictionary::dictionaryWith({{"k"_ns, "v"_ns}});
    return NSMutableDictionary::dictionaryWith(
        {{"a"_ns, leaf}, {"list"_ns, NSArray::arrayWith({"x"_ns, leaf})}, {"null"_ns, QBNil::value()}});
}

TEST_F(QBObjectDeepAccessTest, GetsByKeysIndexesAndAccessorsAndAllocatesNothing) {
    NSDictionary *const values = tree();
    NSString *const key = "list.1.k"_ns;
    const CallCounter counter;
    const std::uint32_t waiting = pool_.objectCount();
    const id value = values->deepObjectForKey(key);
    EXPECT_EQ(pool_.objectCount(), waiting);
    EXPECT_EQ(counter.calls(Call::any), 0u);
    EXPECT_EQ(describe(value), "v");
    EXPECT_EQ(describe(values->deepObjectForKey("list."_ns)), "x");
    EXPECT_EQ(describe(values->deepObjectForKey("a.k.length"_ns)), "1");
    EXPECT_EQ(values->deepObjectForKey("list.18446744073709551616"_ns), nullptr);
    EXPECT_EQ(NSArray::arrayWith({"a"_ns})->deepObjectForKey(NSString::stringWith({"0\0", 2})), nullptr);
    EXPECT_TRUE(isInteger("0123456789") && isInteger(""));
    EXPECT_FALSE(isInteger("1/") || isInteger("1:") || isInteger("-1") || isInteger(nullptr));
}

// What is set and removed is compared with a model in fuzz/DottedKeys.cpp.
TEST_F(QBObjectDeepAccessTest, ACopyOfWhatIsImmutableOnTheWayIsChanged) {
    NSMutableDictionary *const values = tree();
    const id before = values->objectForKey("a"_ns);
    values->setDeepObject("new"_ns, "a.n"_ns);
    EXPECT_EQ(describe(values->objectForKey("a"_ns)), "{k = v; n = new; }");
    EXPECT_EQ(describe(before), "{k = v; }");
}

TEST_F(QBObjectDeepAccessTest, WrongKeysRaiseAndChangeNothing) {
    NSMutableDictionary *const values = tree();
    expectError(30010, "none.k", [&] {
        values->setDeepObject("new"_ns, "a.none.k"_ns);
        EXPECT_EQ(describe(ERRORHANDLER->errorMessage()), "[030010] could not access 'none.k', wrong key");
    });
    EXPECT_EQ(describe(values), describe(tree()));
    EXPECT_ERROR(30010, "(null)", values->setDeepObject("new"_ns, nullptr));
    // An immutable element is used as it is, and takes no key.
    NSMutableArray *const list = NSMutableArray::arrayWith({tree()->objectForKey("a"_ns)});
    EXPECT_ERROR(900010, "NSDictionary k setK:", list->removeDeepObjectForKey("0.k"_ns));
    EXPECT_EQ(describe(list), "({k = v; })");
}

TEST_F(QBObjectDeepAccessTest, ObjectsWithFormsOfTheirOwnGetTheRestOfTheKey) {
    // Keeps what it was asked.
    struct Echo : NSObject {
        id deepObjectForKey(NSString *key) const override { return key; }
        void setDeepObject(id object, NSString *forKey) override {
            seen = NSArray::arrayWith({object, forKey});
        }
        void removeDeepObjectForKey(NSString *key) override { seen = key; }
        Ref<NSObject> seen;
    };
    const auto echo = Ref<Echo>::adopt(new Echo);
    const id values =
        NSMutableDictionary::dictionaryWith({{"e"_ns, NSMutableArray::arrayWith({echo.get()})}});
    EXPECT_EQ(describe(values->deepObjectForKey("e.0.x.y"_ns)), "x.y");
    EXPECT_EQ(values->deepObjectForKey("e.0"_ns), echo.get());
    values->setDeepObject("new"_ns, "e.0.x."_ns);
    EXPECT_EQ(describe(echo->seen.get()), "(new, x.)");
    values->removeDeepObjectForKey("e.0.x.y"_ns);
    EXPECT_EQ(describe(echo->seen.get()), "x.y");
}

TEST_F(QBObjectDeepAccessTest, MillionsOfComponentsAreWalkedOnASmallStack) {
    // Holds itself under each key but "end", where it keeps what is stored.
    struct Ring : NSObject {
        id objectForKey(id key) const override { return key->isEqual("end"_ns) ? stored.get() : self(); }
        void setObjectForKey(id object, id) override { stored = object; }
        void removeObjectForKey(id) override { stored = nullptr; }
        Ref<NSObject> stored;
    };
    EXPECT_TRUE(runOnSmallStack([] {
        constexpr int kDeep = 1'000'000;
        const auto ring = Ref<Ring>::adopt(new Ring);
        Ref<NSMutableArray> nested = NSMutableArray::initWith({ring.get()});
        for (int i = 0; i < kDeep; ++i)
            nested = NSMutableArray::initWith({nested.get()});
        NSString *const key = NSString::stringWith(times(kDeep + 1, "0.") + times(kDeep / 100, "x.") + "end");
        nested->setDeepObject("new"_ns, key);
        EXPECT_EQ(describe(nested->deepObjectForKey(key)), "new");
        nested->removeDeepObjectForKey(key);
        EXPECT_EQ(nested->deepObjectForKey(key), nullptr);
        EXPECT_EQ(tree()->deepObjectForKey(NSString::stringWith(times(kDeep, "x") + ".k")), nullptr);
    }));
}
