#include "support/ServicesFixture.h"

using QBDictionaryAdditionsTest = ServicesFixture;

// An array of the words of a text.
static NSArray *words(std::string_view text) {
    return NSString::stringWith(text)->componentsSeparatedByString(" "_ns);
}

// A mutable dictionary of keys and values in turn.
static NSMutableDictionary *entries(std::string_view text) {
    return NSMutableDictionary::dictFromArray(words(text));
}

TEST_F(QBDictionaryAdditionsTest, AbsentValuesRemoveTheirKeysOrBecomeTheNullObject) {
    const auto after = [](void (NSMutableDictionary::*set)(id, id)) {
        NSMutableDictionary *const dictionary = entries("a old b old c old");
        (dictionary->*set)("v"_ns, "a"_ns);
        (dictionary->*set)(nullptr, "b"_ns);
        (dictionary->*set)(QBNil::value(), "c"_ns);
        return describe(dictionary);
    };
    EXPECT_EQ(after(&NSMutableDictionary::setObjectIfNotNil), "{a = v; c = nil; }");
    EXPECT_EQ(after(&NSMutableDictionary::setObjectIfNotQBNil), "{a = v; }");
    EXPECT_EQ(after(&NSMutableDictionary::setObjectAndQBNilIfIsNil), "{a = v; b = nil; c = nil; }");
}

TEST_F(QBDictionaryAdditionsTest, ManyValuesAreStoredTogether) {
    NSMutableDictionary *const dictionary = NSMutableDictionary::dictionary();
    dictionary->setObjects(words("1 2"), words("a b"));
    dictionary->setObjectForKeys("x"_ns, words("b c"));
    EXPECT_EQ(describe(dictionary), "{a = 1; b = x; c = x; }");
    EXPECT_REASON(dictionary->setObjects(words("1 2 3"), words("d e")),
                  "NSMutableDictionary setObjects:forKeys: must have both arguments of the same size");
    dictionary->setObjectForKey("5"_ns, number(5));
    dictionary->removeObjectsForKeysWithPrefixes(words("x c 5 b"));
    EXPECT_EQ(describe(dictionary), "{a = 1; 5 = 5; }"); // a number has no prefix
}

TEST_F(QBDictionaryAdditionsTest, WhatIsPassedMayBelongToAValueThatGoes) {
    NSMutableDictionary *const dictionary = entries("a old b old");
    const auto owned = [dictionary](auto make) { // by the dictionary alone
        const NSAutoreleasePool pool;
        auto *const value = make();
        dictionary->setObjectForKey(value, "a"_ns);
        return value;
    };
    dictionary->addEntriesFromDictionary(owned([] { return entries("a 1 b 2"); }));
    EXPECT_EQ(describe(dictionary), "{a = 1; b = 2; }");
    dictionary->removeObjectsForKeysWithPrefixes(owned([] { return words("a b"); }));
    EXPECT_EQ(describe(dictionary), "{}");
}

TEST_F(QBDictionaryAdditionsTest, ValuesAreReadWithDefaults) {
    NSDictionary *const dictionary = NSDictionary::dictionaryWith(
        {{"n"_ns, number(7)}, {"t"_ns, "12x"_ns}, {"none"_ns, QBNil::value()}, {"list"_ns, words("a b")}});
    EXPECT_EQ(dictionary->objectForKey("none"_ns, "d"_ns), QBNil::value());
    EXPECT_EQ(describe(dictionary->objectForKey("x"_ns, "d"_ns)), "d");
    EXPECT_EQ(describe(dictionary->deepObjectForKey("list.1"_ns, "d"_ns)), "b");
    EXPECT_EQ(describe(dictionary->deepObjectForKey("list.2"_ns, "d"_ns)), "d");
    EXPECT_EQ(dictionary->intValueForKey("t"_ns, 3), 12);
    EXPECT_EQ(dictionary->intValueForKey("x"_ns, 3), 3);
    EXPECT_EQ(dictionary->boolValueForKey("n"_ns, NO), YES);
    EXPECT_EQ(dictionary->boolValueForKey("x"_ns, YES), YES);
    EXPECT_EQ(describe(dictionary->translateKey("n"_ns)) + describe(dictionary->translateKey("x"_ns)), "7x");
    EXPECT_EQ(describe(dictionary->stringForKey("n"_ns)), "7");
    EXPECT_EQ(dictionary->stringForKey("none"_ns), nullptr);
    EXPECT_EQ(describe(dictionary->arrayUsingKeysFromArray(words("t x n"))), "(12x, 7)");
    EXPECT_EQ(describe(entries("b 1 a 2")->array()), "(b, 1, a, 2)");
}

TEST_F(QBDictionaryAdditionsTest, RelativePathsLieBelowTheBaseDirectory) {
    const auto pathIn = [](const char *text, NSString *withDefault, NSString *base) {
        return describe(entries(text)->pathForKey("log"_ns, withDefault, base));
    };
    EXPECT_EQ(pathIn("log log/x basedir /srv", nullptr, "/other"_ns), "/srv/log/x");
    EXPECT_EQ(pathIn("log /var/log/x basedir /srv", nullptr, nullptr), "/var/log/x");
    EXPECT_EQ(pathIn("log log/x", nullptr, "/other"_ns), "/other/log/x");
    EXPECT_EQ(pathIn("basedir /srv", "a"_ns, nullptr), "/srv/a");
    EXPECT_EQ(pathIn("basedir /srv", nullptr, "/other"_ns), "nil");
}

TEST_F(QBDictionaryAdditionsTest, KeysAndValuesOfDictionariesInsideAreTextsToo) {
    NSDictionary *const inner = NSDictionary::dictionaryWith({{"b"_ns, number(2)}, {"n"_ns, QBNil::value()}});
    NSMutableDictionary *const outer =
        NSMutableDictionary::dictionaryWith({{"z"_ns, inner}, {"a"_ns, "c"_ns}});
    EXPECT_EQ(describe(outer->allKeysAndValuesRecursive(YES, NO)), "(z, a, b, n, 2, c)");
    EXPECT_EQ(describe(outer->allKeysAndValues()), "(2, a, b, c, n, z)");
    outer->setObjectForKey(outer, "self"_ns);
    EXPECT_ERROR(900003, "256", EXPECT_EQ(outer->allKeysAndValues(), nullptr));
    outer->removeAllObjects(); // or it would keep itself
}

TEST_F(QBDictionaryAdditionsTest, DictionariesAreMadeFromOthers) {
    NSDictionary *const source = NSDictionary::dictionaryWith(
        {{"a"_ns, number(1)}, {"b"_ns, "2"_ns}, {"n"_ns, QBNil::value()}, {"c"_ns, words("x")}});
    NSArray *const keys = words("b n x a");
    EXPECT_EQ(describe(NSDictionary::dictWithObjects(words("a b"))), "{a = a; b = b; }");
    EXPECT_EQ(describe(NSDictionary::dictFrom(source, keys)), "{b = 2; n = nil; a = 1; }");
    EXPECT_EQ(describe(NSDictionary::dictFromDictWithKeys(source, words("b a"))), "{b = 2; a = 1; }");
    EXPECT_THROW(NSDictionary::dictFromDictWithKeys(source, keys), InvalidArgumentException); // "x" has none
    EXPECT_EQ(describe(NSDictionary::dictFromDictWithGoodKeys(source, keys)), "{b = 2; a = 1; }");
    EXPECT_EQ(describe(NSDictionary::dictFromDictWithGoodKeys(source, words("a x"), "translateKey:"_sel)),
              "{a = 1; x = x; }");
    struct Minting : ClientClass<Minting, NSDictionary, "Minting"> {
        Ref<NSObject> coin = NSMutableArray::init();
        Ref<NSObject> mint(id) { return coin; }
        static Operations operations() { return {qb::method<"mint:">(&Minting::mint)}; }
    };
    const auto minting = Ref<Minting>::adopt(new Minting); // whose answers belong to the caller
    EXPECT_EQ(describe(NSDictionary::dictFromDictWithGoodKeys(minting, words("a"), "mint:"_sel)),
              "{a = (); }");
    EXPECT_EQ(minting->coin->retainCount(), 2u); // by `minting` and the dictionary
    NSDictionary *const texts = NSDictionary::stringDictFromDict(source, keys);
    EXPECT_EQ(describe(texts), "{b = 2; a = 1; }");
    EXPECT_TRUE(texts->objectForKey("a"_ns)->isKindOfClass(NSString::cls()));
    EXPECT_EQ(describe(source->goodDict()), "{a = 1; b = 2; c = (x); }");
    EXPECT_EQ(source->stringDict()->count(), 3u);
    EXPECT_EQ(describe(source->subDictWithKeys(keys)), "{b = 2; n = nil; a = 1; }");
    EXPECT_EQ(describe(source->subDictWithoutKeys(keys)), "{c = (x); }");
    EXPECT_EQ(describe(NSDictionary::dictionaryWith({{"k"_ns, QBNil::value()}, {number(5), "v"_ns}})
                           ->dictByPrefixingKeysWith("p."_ns)),
              "{p.k = nil; p.5 = v; }");
    EXPECT_EQ(describe(entries("a 1 b 2")->dictByAddingDict(entries("b 3 c 4"))), "{a = 1; b = 3; c = 4; }");
}

TEST_F(QBDictionaryAdditionsTest, ListsOfKeysAndValuesBecomeDictionariesOrErrors) {
    NSArray *const list = words("a 1 b 2 a 3 m 4 m 5 z");
    NSDictionary *const made = NSDictionary::dictFromArray(list, words("m"));
    EXPECT_EQ(describe(made), "{a = 3; b = 2; m = (4, 5); z = nil; }");
    EXPECT_EQ(made->objectForKey("z"_ns), QBNil::value());
    EXPECT_EQ(describe(NSDictionary::dictFromCorrectArray(words("m 1 b 2 m 3"), words("m"))),
              "{m = (1, 3); b = 2; }");
    EXPECT_EQ(describe(NSDictionary::dictWithKeyValues("a"_ns, number(1), "b"_ns, nullptr, "a"_ns, "2"_ns)),
              "{a = 2; }");
    EXPECT_REASON(NSDictionary::dictWithKeyValues("a"_ns),
                  "NSDictionary dictWithKeyValues: must have a value behind each key.");
    NSArray *const withNull = NSArray::arrayWithObjects("a"_ns, QBNil::value());
    EXPECT_EQ(traced("misc", /*level=*/0, [&] { NSDictionary::dictFromCorrectArray(withNull); }),
              "src/QBDictAdditions:L(NSDictionary): +dictFromArray:supportedMultiValues: -> value==<nil>\n");
    const std::pair<const char *, const char *> rows[] = {{"a 1 b", "3 a value for the last key"},
                                                          {"a 1 b 2 a 3", "4 another key"}};
    for (const auto &[incorrect, values] : rows)
        expectError(900020, values, [incorrect = incorrect] {
            EXPECT_EQ(NSDictionary::dictFromCorrectArray(words(incorrect), words("m")), nullptr);
        });
}

TEST_F(QBDictionaryAdditionsTest, KeysAreCheckedAgainstThoseAllowedAndRequired) {
    NSDictionary *const dictionary = entries("a 1 b 2 n"); // the last one has the null object
    EXPECT_EQ(describe(dictionary->badKeysForGoodKeys(words("b c"), words("a n x"))), "(a, n, n, x)");
    EXPECT_EQ(describe(dictionary->badKeysForDisallowNilKeys(words("x b"))), "(x)");
    EXPECT_EQ(dictionary->badKeysForGoodKeys(words("n b a"), words("b")), nullptr);
    EXPECT_THROW(dictionary->badKeysForGoodKeys("b"_ns), InvalidArgumentException);
    EXPECT_EQ(describe(dictionary->keysContainedBy(words("x n c a"))), "(n, a)");
}

TEST_F(QBDictionaryAdditionsTest, KeysAndValuesOwnOperationsMayChangeWhatIsWalkedOrPassed) {
    using Dictionary = NSDictionary;
    meddle([](auto &it, auto &) { it.dictionary->allKeysAndValuesRecursive(YES, /*sorted=*/NO); });
    meddle([](auto &it, auto &) { it.dictionary->stringForKey(it.dictionary->allKeys()->firstObject()); });
    meddle([](auto &it, auto &) { it.dictionary->deepObjectForKey("nested.inner.name"_ns); });
    meddle([](auto &it, auto &) { it.dictionary->dictByPrefixingKeysWith("x"_ns); });
    meddle([](auto &it, auto &other) { it.dictionary->pathForKey(other.single, "p"_ns, "b"_ns); });
    meddle(
        [](auto &it, auto &other) { it.dictionary->objectForKey(it.single, other.single)->retainCount(); });
    meddle(
        [](auto &, auto &other) { NSString::stringWithRestrictedFormatAndObjects("%s%s"_ns, other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->arrayUsingKeysFromArray(other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->keysContainedBy(other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->badKeysForGoodKeys(other.array, other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->badKeysForDisallowNilKeys(other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->dictByAddingDict(other.dictionary); });
    meddle([](auto &, auto &other) { Dictionary::dictFrom(other.dictionary, other.array); });
    meddle([](auto &, auto &other) { Dictionary::dictFromDictWithKeys(other.dictionary, other.array); });
    meddle([](auto &, auto &other) { Dictionary::dictFromDictWithGoodKeys(other.dictionary, other.array); });
    meddle([](auto &it, auto &other) { Dictionary::stringDictFromDict(it.dictionary, other.array); });
    meddle([](auto &it, auto &other) {
        other.array->addObject("last"_ns);
        Dictionary::dictFromCorrectArray(other.array, it.array);
    });
    meddle([](auto &it, auto &other) { it.dictionary->setObjectIfNotQBNil(other.single, "k"_ns); });
    meddle([](auto &it, auto &other) { it.dictionary->setObjectForKeys(other.single, other.array); });
    meddle([](auto &it, auto &other) { it.dictionary->setObjects(other.array, other.array); });
}
