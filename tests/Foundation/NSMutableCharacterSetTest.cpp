#include "support/PoolFixture.h"

using NSMutableCharacterSetTest = PoolFixture;

namespace {

// Which of these the set holds; "?" is a byte that is no valid UTF-8.
std::string membersOf(NSCharacterSet *set) {
    std::string members;
    for (const char character : std::string_view("abcdefé-1"))
        if (set->longCharacterIsMember(static_cast<unsigned char>(character)) && character > 0)
            members += character;
    const char malformed = '\xFF';
    std::size_t used = 0;
    return set->holdsCharacterAt(&malformed, &malformed + 1, used) ? members + "?" : members;
}

} // namespace

TEST_F(NSMutableCharacterSetTest, CharactersComeAndGo) {
    const Ref<NSMutableCharacterSet> set = NSMutableCharacterSet::init();
    set->addCharactersInString("bd"_ns);
    set->addCharactersInRange({'c', 3});
    EXPECT_EQ(membersOf(set), "bcde");
    set->removeCharactersInRange({'a', 2});
    set->removeCharactersInString("d"_ns);
    EXPECT_EQ(membersOf(set), "ce");
    const Ref<NSObject> copy = set->copy();
    EXPECT_TRUE(copy->isMemberOfClass(NSCharacterSet::cls()));
    set->invert();
    EXPECT_EQ(membersOf(set), "abdf-1?");
    set->formIntersectionWithCharacterSet(NSCharacterSet::letterCharacterSet());
    EXPECT_EQ(membersOf(set), "abdf");
    EXPECT_TRUE(set->longCharacterIsMember(0x416));
    set->formUnionWithCharacterSet(NSCharacterSet::letterCharacterSet()->invertedSet());
    EXPECT_EQ(membersOf(set), "abdf-1?");
    EXPECT_TRUE(copy->isEqual(set->invertedSet()));
    set->formUnionWithCharacterSet(nullptr);
    set->formIntersectionWithCharacterSet(nullptr);
    EXPECT_EQ(membersOf(set), "");
    EXPECT_THROW(set->addCharactersInRange({0x10FFFF, 2}), InvalidArgumentException);
}

TEST_F(NSMutableCharacterSetTest, SetsAreSupersetsOfTheirParts) {
    NSCharacterSet *const letters = NSCharacterSet::letterCharacterSet();
    EXPECT_TRUE(NSCharacterSet::alphanumericCharacterSet()->isSupersetOfSet(letters));
    EXPECT_FALSE(letters->isSupersetOfSet(NSCharacterSet::alphanumericCharacterSet()));
    EXPECT_TRUE(letters->isSupersetOfSet(letters) && letters->isSupersetOfSet(nullptr));
    const Ref<NSMutableCharacterSet> more = letters->mutableCopy();
    more->addCharactersInString("1"_ns);
    EXPECT_TRUE(more->isSupersetOfSet(letters));
    EXPECT_FALSE(letters->longCharacterIsMember('1'));
}

TEST_F(NSMutableCharacterSetTest, BitmapsHoldAPlaneEach) {
    const Ref<NSMutableCharacterSet> set = NSMutableCharacterSet::init();
    set->addCharactersInRange({0xFFFE, 4}); // across two planes
    set->addCharactersInString("a😀"_ns);
    NSData *const bitmap = set->bitmapRepresentation();
    EXPECT_EQ(bitmap->length(), 8192u + 1 + 8192);
    const auto *const bits = static_cast<const unsigned char *>(bitmap->bytes());
    EXPECT_EQ(bits['a' / 8], 1 << ('a' % 8));
    EXPECT_EQ(bits[8191], 0xC0);
    EXPECT_EQ(bits[8192], 1); // the plane's number
    EXPECT_EQ(bits[8193], 3);
    EXPECT_TRUE(NSCharacterSet::characterSetWithBitmapRepresentation(bitmap)->isEqual(set));
    EXPECT_TRUE(set->hasMemberInPlane(1) && !set->hasMemberInPlane(2) && !set->hasMemberInPlane(200));
    EXPECT_EQ(NSMutableCharacterSet::init()->bitmapRepresentation()->length(), 8192u);
    for (const std::uint32_t length : {1u, 8191u, 8193u, 16384u})
        EXPECT_THROW(
            NSCharacterSet::characterSetWithBitmapRepresentation(bitmap->subdataWithRange({0, length})),
            InvalidArgumentException)
            << length;
    NSMutableData *const wrong = NSMutableData::dataWithData(bitmap);
    static_cast<unsigned char *>(wrong->mutableBytes())[8192] = 17;
    EXPECT_THROW(NSCharacterSet::characterSetWithBitmapRepresentation(wrong), InvalidArgumentException);
}
