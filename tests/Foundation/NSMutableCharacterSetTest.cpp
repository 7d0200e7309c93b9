#include "support/PoolFixture.h"

using NSMutableCharacterSetTest = PoolFixture;

TEST_F(NSMutableCharacterSetTest, CharactersComeAndGo) {
    const Ref<NSMutableCharacterSet> set = NSMutableCharacterSet::init();
    const auto holds = [&set](NSString *characters) {
        return set->isEqual(NSCharacterSet::characterSetWithCharactersInString(characters));
    };
    set->addCharactersInString("bd"_ns);
    set->addCharactersInRange({'c', 3});
    EXPECT_TRUE(holds("bcde"_ns));
    set->removeCharactersInRange({'a', 2});
    set->removeCharactersInString("d"_ns);
    EXPECT_TRUE(holds("ce"_ns));
    const Ref<NSObject> copy = set->copy();
    EXPECT_TRUE(copy->isMemberOfClass(NSCharacterSet::cls()));
    set->invert();
    const char malformed = '\xFF';
    std::size_t used = 0;
    EXPECT_TRUE(set->holdsCharacterAt(&malformed, &malformed + 1, used)); // malformed bytes too
    set->formIntersectionWithCharacterSet(NSCharacterSet::letterCharacterSet());
    EXPECT_TRUE(set->characterIsMember('a') && !set->longCharacterIsMember('1'));
    set->formUnionWithCharacterSet(NSCharacterSet::letterCharacterSet()->invertedSet());
    EXPECT_TRUE(copy->isEqual(set->invertedSet()));
    EXPECT_TRUE(NSMutableCharacterSet::letterCharacterSet()->isEqual(NSCharacterSet::letterCharacterSet()));
    made(NSMutableCharacterSet::cls(), "symbolCharacterSet");
    set->formUnionWithCharacterSet(nullptr);
    set->formIntersectionWithCharacterSet(nullptr);
    EXPECT_TRUE(holds(""_ns));
    EXPECT_THROW(set->addCharactersInRange({0x10FFFF, 2}), InvalidArgumentException);
    expectAllOrBadAlloc([] {
        const Ref<NSMutableCharacterSet> bd = NSMutableCharacterSet::characterSetWithRange({'b', 2});
        try {
            bd->addCharactersInString("fhj"_ns);
        } catch (const std::bad_alloc &) {
            return bd->isEqual(NSCharacterSet::characterSetWithRange({'b', 2}));
        }
        return YES;
    });
}

TEST_F(NSMutableCharacterSetTest, EqualSetsHaveOneHashAndSupersetsHoldTheirParts) {
    std::set<std::uint32_t> hashes;
    for (std::uint32_t first = 0x400; first < 0x800; ++first)
        hashes.insert(NSCharacterSet::characterSetWithRange({first, 3})->hash());
    EXPECT_GE(hashes.size(), 1020u);
    const auto made = NSMutableCharacterSet::init();
    made->addCharactersInRange({'\n', 4});
    made->addCharactersInString("\u0085\u2028\u2029"_ns);
    NSCharacterSet *const lineEnds = NSCharacterSet::newlineCharacterSet();
    EXPECT_TRUE(made->isEqual(lineEnds) && made->hash() == lineEnds->hash());
    made->invert();
    EXPECT_TRUE(made->isEqual(lineEnds->invertedSet()) && made->hash() == lineEnds->invertedSet()->hash());
    EXPECT_FALSE(made->isEqual(lineEnds) || made->hash() == lineEnds->hash());
    NSCharacterSet *const letters = NSCharacterSet::letterCharacterSet();
    EXPECT_TRUE(letters->isSupersetOfSet(letters) && letters->isSupersetOfSet(nullptr));
    const Ref<NSMutableCharacterSet> more = letters->mutableCopy();
    more->addCharactersInString("1"_ns);
    EXPECT_TRUE(more->isSupersetOfSet(letters) && !letters->isSupersetOfSet(more));
}

TEST_F(NSMutableCharacterSetTest, BitmapsHoldAPlaneEach) {
    const Ref<NSMutableCharacterSet> set = NSMutableCharacterSet::init();
    set->addCharactersInRange({0xFFFE, 4}); // across two planes
    set->addCharactersInString("a😀"_ns);
    NSData *const bitmap = set->bitmapRepresentation();
    EXPECT_EQ(bitmap->length(), 8192u + 1 + 8192);
    const auto *const bits = static_cast<const unsigned char *>(bitmap->bytes());
    EXPECT_EQ(bits['a' / 8], 1 << ('a' % 8));
    EXPECT_TRUE(bits[8191] == 0xC0 && bits[8193] == 3);
    EXPECT_EQ(bits[8192], 1); // the plane's number
    EXPECT_TRUE(NSCharacterSet::characterSetWithBitmapRepresentation(bitmap)->isEqual(set));
    EXPECT_TRUE(set->hasMemberInPlane(1) && !set->hasMemberInPlane(2) && !set->hasMemberInPlane(200));
    EXPECT_THROW(NSCharacterSet::characterSetWithBitmapRepresentation(bitmap->subdataWithRange({0, 8193})),
                 InvalidArgumentException);
    NSMutableData *const wrong = NSMutableData::dataWithData(bitmap);
    static_cast<unsigned char *>(wrong->mutableBytes())[8192] = 17;
    EXPECT_THROW(NSCharacterSet::characterSetWithBitmapRepresentation(wrong), InvalidArgumentException);
}
