#include "support/PoolFixture.h"

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

TEST_F(NSObjectTest, TheRootsOperationsAnswerForItsSubclasses) {
    NSString *const text = "ab"_ns;
    NSArray *const array = NSArray::arrayWithObject(text);
    EXPECT_EQ(answer(text, "performSelector:", {"uppercaseString"_sel}), "AB");
    EXPECT_EQ(answer(text, "performSelector:withObject:", {"stringByAppendingString:"_sel, text}), "abab");
    EXPECT_EQ(answer(NSDictionary::cls(), "performSelector:withObject:withObject:",
                     {"dictionaryWithObject:forKey:"_sel, text, array}),
              "{(ab) = ab; }");
    EXPECT_EQ(answer(NSMutableArray::array(), "superclass"), "NSArray");
    EXPECT_EQ(answer(NSMutableArray::cls(), "isSubclassOfClass:", {NSArray::cls()}), "1");
    EXPECT_EQ(answer(NSArray::cls(), "isSubclassOfClass:", {NSMutableArray::cls()}), "0");
    EXPECT_EQ(answer(NSArray::cls(), "instancesRespondToSelector:", {"addObject:"_sel}), "0");
    EXPECT_EQ(answer(NSArray::cls(), "respondsToSelector:", {"array"_sel}), "1");
    EXPECT_EQ(answer(array, "isMemberOfClass:", {NSObject::cls()}), "0");
    EXPECT_EQ(answer(NSArray::cls(), "copyWithZone:", {nullptr}), "NSArray");
    EXPECT_EQ(answer(array, "mutableCopyWithZone:", {nullptr}), "(ab)");
    EXPECT_EQ(answer(array, "descriptionWithLocale:", {nullptr}), "(\n  ab\n)");
    EXPECT_EQ(answer(text, "asArray"), "(ab)");
    EXPECT_EQ(answer(NSObject::init().autorelease(), "description").substr(0, 9), "<NSObject");
    EXPECT_EQ(answer(number(2024), "standardizedISODateTimeString"), "20240101000000");
    EXPECT_EQ(array->asNumber(), nullptr);
    EXPECT_EQ(answer(number(12), "asData"), "<3132>");
    EXPECT_EQ(answer(number(12), "containsData"), "1");
    EXPECT_EQ(NSProtocolFromString("OutputStreaming"_ns), Protocol::named("OutputStreaming"));
    EXPECT_EQ(answer(Protocol::named("OutputStreaming"), "name"), "OutputStreaming");
    EXPECT_EQ(NSProtocolFromString(nullptr), nullptr);
    EXPECT_REASON(text->doesNotRecognizeSelector("fly"_sel),
                  "NSString fly must be an operation that the receiver has.");
    EXPECT_THROW(NSProcessInfo::processInfo()->copy(), InvalidUseOfMethodException);
    EXPECT_THROW(NSProcessInfo::processInfo()->mutableCopy(), InvalidUseOfMethodException);
    EXPECT_TRUE("text"_ns->conformsToProtocol(Protocol::named("OutputStreaming")));
    EXPECT_TRUE(QBNil::value()->conformsToProtocol(Protocol::named("PropertyListOutputStreaming")));
    EXPECT_FALSE("text"_ns->conformsToProtocol(Protocol::named("Streaming")));
}

TEST_F(NSObjectTest, EachClassHasAnEqualityOfItsOwn) {
    NSDate *const date = NSDate::dateWithTimeIntervalSince1970(0);
    NSTimeZone *const zone = NSTimeZone::timeZoneForSecondsFromGMT(60);
    const std::tuple<const char *, id, id> rows[] = {
        {"isEqualToArray:", NSArray::array(), NSArray::arrayWithObject("a"_ns)},
        {"isEqualToData:", NSData::data(), NSData::dataWithBytes("a", 1)},
        {"isEqualToDate:", date, NSDate::dateWithTimeInterval(1, date)},
        {"isEqualToDictionary:", NSDictionary::dictionary(),
         NSDictionary::dictionaryWith({{"a"_ns, "b"_ns}})},
        {"isEqualToNumber:", number(1), number(2)},
        {"isEqualToSet:", NSSet::set(), NSSet::setWithObject("a"_ns)},
        {"isEqualToString:", "a"_ns, "b"_ns},
        {"isEqualToTimeZone:", zone, NSTimeZone::timeZoneForSecondsFromGMT(0)},
        {"isEqual:", "a/b"_ns->asQbPath(), "a/c"_ns->asQbPath()},
        {"isEqualToValue:", NSValue::valueWithPointer(date), NSValue::valueWithPointer(zone)},
    };
    for (const auto &[selector, one, other] : rows) {
        EXPECT_EQ(answer(one, selector, {one}) + answer(one, selector, {other}), "10") << selector;
        EXPECT_EQ(answer(one, selector, {nullptr}), "0") << selector;
        EXPECT_NE(one->hash(), other->hash()) << selector;
    }
}
