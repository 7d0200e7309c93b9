#include "support/ClientClass.h"
#include "support/PoolFixture.h"

using NSDictionaryTest = PoolFixture;

TEST_F(NSDictionaryTest, KeepsTheOrderOfFirstInsertionAndCopiesKeys) {
    NSMutableString *const key = NSMutableString::stringWith("b");
    NSMutableDictionary *const dictionary = NSMutableDictionary::dictionary();
    dictionary->setObjectForKey(number(1), key);
    dictionary->setObjectForKey(number(2), "a"_ns);
    key->appendString("x"_ns);
    dictionary->setObjectForKey(number(3), "b"_ns);
    EXPECT_EQ(describe(dictionary), "{b = 3; a = 2; }");
    dictionary->removeObjectForKey("b"_ns);
    dictionary->setObjectForKey(number(4), "b"_ns);
    EXPECT_EQ(describe(dictionary->keyEnumerator()->allObjects()), "(a, b)");
    EXPECT_EQ(describe(dictionary->objectEnumerator()->allObjects()), "(2, 4)");
}

TEST_F(NSDictionaryTest, IsMadeFromArraysBuffersAndArguments) {
    NSArray *const keys = NSArray::arrayWithObjects("a"_ns, "b"_ns);
    NSArray *const values = NSArray::arrayWithObjects(number(1), number(2));
    id objects[2] = {}, words[2] = {};
    NSDictionary::dictionaryWithObjectsForKeys(values, keys)->getObjects(objects, words);
    EXPECT_EQ(describe(NSDictionary::dictionaryWithObjectsForKeys(objects, words, 2)), "{a = 1; b = 2; }");
    for (const char *maker : {"dictionaryWithObjects:forKeys:", "initWithObjects:forKeys:"})
        EXPECT_EQ(made(NSMutableDictionary::cls(), maker, {values, keys}), "{a = 1; b = 2; }");
    for (const char *maker : {"dictionaryWithObject:forKey:", "initWithObject:forKey:"})
        EXPECT_EQ(made(NSDictionary::cls(), maker, {"x"_ns, "y"_ns}), "{y = x; }");
    EXPECT_EQ(describe(NSDictionary::dictionaryWithObjectsAndKeys(number(1), "a"_ns, number(2), "b"_ns)),
              "{a = 1; b = 2; }");
    EXPECT_REASON(NSDictionary::dictionaryWithObjectsForKeys(values, NSArray::arrayWithObject("a"_ns)),
                  "NSDictionary initWithObjects:forKeys: must have as many objects as keys.");
    NSDictionary *const lists = NSDictionary::dictionaryWithObjectForKey(NSMutableArray::array(), "list"_ns);
    const Ref<NSDictionary> copies = NSMutableDictionary::initWithDictionary(lists, /*copyItems=*/YES);
    static_cast<NSMutableArray *>(lists->objectForKey("list"_ns))->addObject("x"_ns);
    EXPECT_EQ(describe(copies.get()), "{list = (); }");
}

TEST_F(NSDictionaryTest, KeysAreFoundByTheirValues) {
    struct Copyless : NSObject {
        Ref<NSObject> copyWithZone(void *) const override { return nullptr; }
    };
    const auto copyless = Ref<Copyless>::adopt(new Copyless);
    EXPECT_THROW(NSMutableDictionary::dictionary()->setObjectForKey("v"_ns, copyless),
                 InvalidArgumentException);
    NSDictionary *const dictionary = NSDictionary::dictionaryWith(
        {{"a"_ns, number(3)}, {"b"_ns, number(1)}, {"c"_ns, number(3)}, {"d"_ns, number(2)}});
    EXPECT_EQ(describe(dictionary->allKeysForObject(NSNumber::numberWithDouble(3))), "(a, c)");
    EXPECT_EQ(describe(dictionary->keysSortedByValueUsingSelector("compare:"_sel)), "(b, d, a, c)");
    NSArray *const keys = NSArray::arrayWithObjects("d"_ns, "x"_ns);
    EXPECT_EQ(describe(dictionary->objectsForKeys(keys, "none"_ns)), "(2, none)");
}

TEST_F(NSDictionaryTest, TakesOtherDictionariesInAndOut) {
    NSMutableDictionary *const dictionary =
        NSMutableDictionary::dictionaryWithObjectForKey(number(1), "a"_ns);
    NSDictionary *const copy = dictionary->copy().autorelease();
    dictionary->addEntriesFromDictionary(
        NSDictionary::dictionaryWith({{"b"_ns, number(2)}, {"a"_ns, number(9)}}));
    dictionary->removeObjectsForKeys(NSArray::arrayWithObjects("a"_ns, "x"_ns));
    EXPECT_EQ(describe(dictionary), "{b = 2; }");
    dictionary->setDictionary(copy);
    dictionary->setDictionary(dictionary);
    EXPECT_EQ(describe(dictionary), "{a = 1; }");
    NSMutableDictionary *const other = NSMutableDictionary::dictionary();
    for (int i = 0; i < 100; ++i)
        other->setObjectForKey(number(i), number(i));
    const Fault fault(Call::allocate, /*skip=*/0, /*times=*/0, ENOMEM);
    try {
        dictionary->setDictionary(other);
    } catch (const std::bad_alloc &) {
    }
    EXPECT_EQ(dictionary->count(), fault.hits() ? 1u : 100u); // without free lists none is hit
}

TEST_F(NSDictionaryTest, ChangesOfKeysDuringEnumerationThrow) {
    NSMutableDictionary *const dictionary =
        NSMutableDictionary::dictionaryWith({{"a"_ns, number(1)}, {"b"_ns, number(2)}, {"c"_ns, number(3)}});
    NSEnumerator *const enumerator = dictionary->keyEnumerator();
    enumerator->nextObject();
    dictionary->setObjectForKey(number(9), "b"_ns); // the keys stay
    EXPECT_EQ(describe(enumerator->nextObject()), "b");
    dictionary->removeObjectForKey("a"_ns);
    EXPECT_REASON(enumerator->nextObject(),
                  "NSDictionary nextObject must have a dictionary that was not changed meanwhile.");
}

TEST_F(NSDictionaryTest, ADestructorMayComeBackToItsDictionaryOrWalkIt) {
    // Removes its key when it goes.
    struct Remover : NSObject {
        Remover(NSMutableDictionary *dictionary, int key) : dictionary_(dictionary), key_(key) {}
        ~Remover() override { dictionary_->removeObjectForKey(number(key_)); }
        NSMutableDictionary *dictionary_;
        int key_;
    };
    NSMutableDictionary *const dictionary = NSMutableDictionary::dictionary();
    const auto fill = [dictionary] {
        for (int i = 0; i < 20; ++i)
            dictionary->setObjectForKey(Ref<Remover>::adopt(new Remover(dictionary, i + 1)).get(), number(i));
    };
    fill();
    dictionary->setObjectForKey("x"_ns, number(3)); // the old one removes 4, which removes 5 …
    EXPECT_EQ(dictionary->count(), 4u);
    fill();
    dictionary->removeAllObjects();
    fill();
    dictionary->removeObjectForKey(number(0)); // which removes 1, which removes 2 …
    EXPECT_EQ(dictionary->count(), 0u);

    struct Member : NSObject {
        explicit Member(NSMutableDictionary *list) : list_(list) {}
        ~Member() override { list_->removeObjectForKey(this); }
        NSMutableDictionary *list_;
    };
    struct List : NSMutableDictionary {
        ~List() override {
            for (const auto &[key, value] : *this)
                value->retainCount();
        }
    };
    const auto list = Ref<NSMutableDictionary>::adopt(new List);
    list->setObjectForKey("v"_ns, "k"_ns);
    { const auto member = Ref<Member>::adopt(new Member(list)); }
    EXPECT_EQ(list->count(), 1u);
}

TEST_F(NSDictionaryTest, ClientsCopiesMayBeShorterOrMissing) {
    struct Shorter : ClientClass<Shorter, NSMutableArray, "Shorter"> {
        Ref<NSObject> copyWithZone(void *) const override { return NSArray::init(); }
    };
    struct Uncopied : ClientClass<Uncopied, NSMutableString, "Uncopied"> {
        Ref<NSObject> copyWithZone(void *) const override { return nullptr; }
    };
    const Ref<Shorter> keys = Ref<Shorter>::adopt(new Shorter);
    keys->addObjectsFromArray(NSArray::arrayWithObjects("a"_ns, "b"_ns));
    EXPECT_EQ(describe(NSDictionary::dictionaryWithObjectsForKeys(NSArray::arrayWithObjects("1"_ns, "2"_ns),
                                                                  keys.get())),
              "{a = 1; b = 2; }");
    const Ref<Uncopied> key = Ref<Uncopied>::adopt(new Uncopied);
    EXPECT_REASON(NSMutableDictionary::dictionary()->setDeepObject("v"_ns, key.get()),
                  "NSString copyWithZone: must have a copy of its kind that is not nil.");
}

TEST_F(NSDictionaryTest, KeysAndValuesOwnOperationsMayChangeWhatIsWalkedOrPassed) {
    meddle([](auto &it, auto &other) { it.dictionary->allKeysForObject(other.single); });
    meddle([](auto &, auto &other) { NSDictionary::dictionaryWithDictionary(other.dictionary); });
    meddle([](auto &, auto &other) { NSDictionary::initWithDictionary(other.dictionary, YES); });
    meddle([](auto &it, auto &other) { it.dictionary->objectsForKeys(other.array, other.single); });
    meddle([](auto &it, auto &other) { it.dictionary->objectForKey(other.single); });
    meddle([](auto &it, auto &other) { it.dictionary->setObjectForKey("v"_ns, other.single); });
    meddle([](auto &it, auto &other) { it.dictionary->removeObjectForKey(other.single); });
    meddle([](auto &it, auto &) { NSKeyedArchiver::archivedDataWithRootObject(it.dictionary); });
    meddle([](auto &it, auto &) { it.dictionary->descriptionInStringsFileFormat(); });
}
