#include "support/PoolFixture.h"

using RefTest = PoolFixture;

TEST_F(RefTest, EqualsWhateverRefersToTheSameObject) {
    const Ref<NSString> text = NSString::initWith("a");
    const Ref<NSObject> object = text;
    const Ref<NSMutableString> other = NSMutableString::initWithCapacity(1);
    EXPECT_TRUE(text == object && object == text && text == text.get() && text.get() == object);
    EXPECT_TRUE(text == object.get() && object.get() == text && object == static_cast<id>(text));
    EXPECT_FALSE(text == other || other.get() == text || text == nullptr || nullptr == object);
    EXPECT_TRUE(text != other && text.get() != other && NSString::initWith("a") != text.get());
}

TEST_F(RefTest, TwoInBracesAreElements) {
    const Ref<NSString> a = NSString::initWith("a");
    const Ref<NSObject> b = NSString::initWith("b");
    NSString *const plain = "b"_ns;
    const id made[] = {NSArray::arrayWith({a, b}),
                       NSArray::initWith({a, a}).autorelease(),
                       NSArray::arrayWith({plain, a}),
                       NSMutableArray::arrayWith({a, plain}),
                       NSMutableArray::initWith({a, b}).autorelease(),
                       NSSet::setWith({a, b}),
                       NSSet::initWith({b, a}).autorelease(),
                       NSMutableSet::setWith({a, plain}),
                       NSMutableSet::initWith({plain, a}).autorelease()};
    for (id one : made)
        EXPECT_EQ(send<std::uint32_t>(one, "count"_sel), 2u) << describe(one);
}
