#include "support/PoolFixture.h"

using QBArrayAdditionsTest = PoolFixture;

TEST_F(QBArrayAdditionsTest, ElementsAreChosenByTheirAnswersAndEqualOnesKeptOnce) {
    EXPECT_EQ(describe(letters("aba")->uniqueArrayWithoutObj("b"_ns)), "(a)");
    NSArray *const numbers =
        NSArray::arrayWithObjects("0"_ns, number(0), "7x"_ns, number(7), "7"_ns, number(7));
    EXPECT_EQ(describe(numbers->uniqueArraySelectedWithSelector("intValue"_sel)), "(7x, 7, 7)");
    EXPECT_EQ(describe(numbers->uniqueArraySelectedWithSelector("asNumber"_sel)), "(0, 0, 7, 7)");
    EXPECT_EQ(describe(numbers->uniqueArrayWithoutObj("7"_ns, "boolValue"_sel)), "(7x, 7)");
    EXPECT_EQ(describe(numbers->selectWithSelector("boolValue"_sel)), "(7x, 7, 7, 7)");
    EXPECT_EQ(describe(numbers->selectWithSelector("isEqual:"_sel, "7"_ns)), "(7)");
    EXPECT_EQ(describe(numbers->rejectWithSelector("boolValue"_sel)), "(0, 0)");
    EXPECT_EQ(describe(letters("ab")->filterWithSelector("stringByAppendingString:"_sel, "x"_ns)),
              "(ax, bx)");
    EXPECT_TRUE(letters("aa")->allTrueWithObject("a"_ns, "isEqual:"_sel));
    EXPECT_EQ(numbers->indexOfObjectUsingSelector("isEqual:"_sel, "7"_ns), 4u);
    EXPECT_EQ(numbers->indexOfObjectUsingSelector("isEqual:"_sel, "8"_ns), 0x7fffffffu);
    // The first of equal elements stands for all: it is not asked for a second one.
    NSArray *const objects = NSArray::arrayWithObjects(QBNil::value(), QBNil::value(), "a"_ns);
    EXPECT_EQ(describe(objects->uniqueArraySelectedWithSelector("isNotNil"_sel)), "(a)");
}

TEST_F(QBArrayAdditionsTest, SetOperationsAreThoseOfPlainLoops) {
    const auto filtered = [](NSArray *array, auto isWanted) {
        NSMutableArray *const result = NSMutableArray::array();
        for (id element : *array)
            if (isWanted(element, result))
                result->addObject(element);
        return result;
    };
    const auto isNew = [](id element, NSArray *before) { return !before->containsObject(element); };
    std::mt19937 random(5);
    for (unsigned round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const auto make = [&] { // of strings only in the first rounds
            NSMutableArray *const array = NSMutableArray::array();
            for (unsigned i = random() % (round % 3 ? 400 : 4); i != 0; --i) { // and small ones, or none
                NSNumber *const value = number(static_cast<int>(random() % 300));
                array->addObject(random() % 60 < round ? id{value} : value->stringValue());
            }
            return array;
        };
        NSMutableArray *const a = make();
        NSArray *const b = make();
        NSArray *const bad = filtered(a, [b](id element, id) { return !b->containsObject(element); });
        NSArray *const common = filtered(b, [a](id element, id) { return a->containsObject(element) != NO; });
        const auto described = [](NSArray *array) { return array->count() ? describe(array) : "nil"; };
        EXPECT_EQ(describe(a->uniqueArray()), describe(filtered(a, isNew)));
        EXPECT_EQ(describe(a->plus(b)), describe(filtered(a->arrayByAddingObjectsFromArray(b), isNew)));
        EXPECT_EQ(describe(a->minus(b)), describe(filtered(bad, isNew)));
        EXPECT_EQ(describe(a->commonElementsWithArray(b)), described(common));
        EXPECT_EQ(a->hasCommonElementsWithArray(b), common->count() > 0);
        EXPECT_EQ(describe(a->badElementsForGoodElements(b)), described(bad));
        const std::string unique = describe(a->uniqueArray());
        a->makeUnique();
        EXPECT_EQ(describe(a), unique);
    }
    EXPECT_EQ(describe(letters("aab")->plus(nullptr)), "(a, b)"); // nil counts as an empty set
    EXPECT_EQ(describe(letters("aab")->badElementsForGoodElements(nullptr)), "(a, a, b)");
}

TEST_F(QBArrayAdditionsTest, PartsAndOtherShapes) {
    NSArray *const abc = letters("abc");
    EXPECT_EQ(describe(abc->shift()), "(b, c)");
    EXPECT_EQ(letters("a")->shift(), nullptr);
    EXPECT_EQ(abc->subarrayFromIndex(0), abc);
    EXPECT_EQ(abc->subarrayFromIndex(3), nullptr);
    EXPECT_EQ(describe(abc->reversedArray()), "(c, b, a)");
    EXPECT_EQ(describe(abc->joinedBy("x"_ns)), "(a, x, b, x, c)");
    EXPECT_EQ(describe(letters("12")->dictWithSchema(letters("ab"))), "{a = 1; b = 2; }");
    EXPECT_EQ(letters("12")->dictWithSchema(abc), nullptr);

    char one[] = "one", none[] = "";
    char *texts[] = {one, none}; // as `main` has them
    EXPECT_EQ(describe(NSArray::arrayWithCStrings(2, texts)), "(one, )");
    EXPECT_EQ(describe(send<id>(NSArray::cls(), "arrayWithCStrings::"_sel, 2, texts)), "(one, )");
    struct OwnArray : ClientClass<OwnArray, NSArray, "OwnArray"> {};
    EXPECT_TRUE(
        send<id>(OwnArray::cls(), "arrayWithCStrings::"_sel, 2, texts)->isMemberOfClass(OwnArray::cls()));
}

TEST_F(QBArrayAdditionsTest, TextsAreJoinedToListsPathsAndExpressions) {
    NSArray *const mixed = NSArray::arrayWithObjects("a"_ns, number(5), QBNil::value(), "b"_ns);
    NSArray *const cut = NSArray::arrayWithObjects("a\0b"_ns, "c"_ns);
    EXPECT_EQ(describe(mixed->stringsJoinedByString(", "_ns)), "a, 5, null, b");
    EXPECT_EQ(describe(cut->stringsJoinedByString(", "_ns)), "a");
    EXPECT_EQ(describe(mixed->pathString()), "a/5/b");
    EXPECT_EQ(describe(mixed->absolutePathString()), "/a/5/b");
    EXPECT_EQ(describe(mixed->orExpression()), "(a OR 5 OR null OR b)");
    EXPECT_EQ(describe(letters("ab")->andExpression()), "(a AND b)");
    EXPECT_EQ(NSArray::array()->orExpression(), nullptr);
    NSArray *const one = NSArray::arrayWithObject(number(5));
    EXPECT_EQ(one->expressionWithOperator(nullptr), number(5));
}

TEST_F(QBArrayAdditionsTest, SortsByKeyWithoutRegardToCase) {
    const auto page = [](const char *number, id value, const char *key = "name") {
        NSMutableDictionary *const made =
            NSMutableDictionary::dictionaryWithObjectForKey(NSString::stringWithCString(number), "number"_ns);
        made->setObjectIfNotNil(value, NSString::stringWithCString(key));
        return made;
    };
    const auto order = [](NSArray *array, NSString *key) {
        std::string numbers;
        for (id element : *array->caseInsensitiveSortedArrayByKey(key))
            numbers += describe(static_cast<NSDictionary *>(element)->objectForKey("number"_ns));
        return numbers;
    };
    NSArray *const pages =
        NSArray::arrayWithObjects(page("1", "b"_ns), page("2", nullptr), page("3", "A"_ns),
                                  page("4", QBNil::value()), page("5", "B"_ns), page("6", "a"_ns));
    EXPECT_EQ(order(pages, "name"_ns), "361524");
    EXPECT_EQ(order(pages, "name.REVERSE"_ns), "425163");
    EXPECT_EQ(order(pages, "name.x"_ns), "123456");
    NSArray *const dotted = NSArray::arrayWithObjects(page("1", "b"_ns, "a.b"), page("2", "a"_ns, "a.b"),
                                                      page("3", "c"_ns, "a.b"));
    EXPECT_EQ(order(dotted, "a.b"_ns) + order(dotted, "a.b.Reverse"_ns), "213312"); // the key itself, no path
    NSArray *const kinds = NSArray::arrayWithObjects(page("1", "10"_ns), page("2", number(9)));
    EXPECT_THROW(kinds->caseInsensitiveSortedArrayByKey("name"_ns), InvalidArgumentException);
}

TEST_F(QBArrayAdditionsTest, AddsWhatIsThere) {
    NSMutableArray *const array = NSMutableArray::array();
    for (id object : {id("a"_ns), id(nullptr), id(QBNil::value())}) {
        array->addObjectIfNotNil(object);
        array->addObjectIfNotQBNil(object);
        array->addObjectAndQBNilIfNil(object);
    }
    EXPECT_EQ(describe(array), "(a, a, a, nil, nil, nil)");
    array->removeAllObjects();
    array->addObjectsFrom(letters("xy"));
    array->addObjectsFrom(nullptr);
    array->removeFirstObject();
    EXPECT_EQ(describe(array), "(y)");
    array->removeFirstObject();
    array->removeFirstObject(); // of none
}

TEST_F(QBArrayAdditionsTest, ElementsOwnOperationsMayChangeWhatIsWalkedOrPassed) {
    meddle([](auto &it, auto &other) { it.array->uniqueArrayWithoutObj(other.single); });
    meddle([](auto &it, auto &other) { it.array->plus(other.array); });
    meddle([](auto &it, auto &other) { it.array->minus(other.array); });
    meddle([](auto &it, auto &other) { it.array->commonElementsWithArray(other.array); });
    meddle([](auto &it, auto &other) { it.array->hasCommonElementsWithArray(other.array); });
    meddle([](auto &it, auto &other) { it.array->badElementsForGoodElements(other.array); });
    meddle([](auto &it, auto &) { it.array->makeUnique(); });
    meddle([](auto &it, auto &) { it.array->replace("a"_ns, "b"_ns, /*recursive=*/YES); });
    meddle([](auto &it, auto &other) { it.array->addObjectIfNotQBNil(other.single); });
    meddle([](auto &, auto &other) { QBPath::qbPathWithArray(other.array, YES, NO); });
    meddle([](auto &it, auto &) { it.array->stringsJoinedByString(nullptr); });
    meddle([](auto &it, auto &) { it.array->indexOfObjectUsingSelector("isEqual:"_sel, "x"_ns); });
    meddle([](auto &it, auto &) { QBPath::qbPathWithObject(it.array->firstObject()); });
    meddle([](auto &it, auto &) { "/a"_ns->asQbPath()->objectRelativeTo(it.array->firstObject()); });
}
