#include "Foundation/Buffer.h"
#include "Foundation/Kept.h"
#include "support/PoolFixture.h"

using NSDataTest = PoolFixture;

TEST_F(NSDataTest, TakesMemoryOver) {
    void *const memory = ::strdup("text");
    EXPECT_EQ(NSData::dataWithBytesNoCopy(memory, 4)->bytes(), memory);
    NSMutableData *const text = NSMutableData::dataWithBytesNoCopy(::strdup("text"), 4);
    text->appendBytes("s", 1);
    EXPECT_TRUE(text->isEqualToData(dataOf("texts")));
    NSData *const empty = send<NSData *>(NSData::cls(), "dataWithBytesNoCopy:length:"_sel, ::malloc(1), 0u);
    QBDataOutputStream *const stream = QBDataOutputStream::stream();
    stream->writeObject(empty); // is nothing, but no null buffer
    EXPECT_EQ(stream->targetData()->length(), 0u);
    char kept[1]; // what is refused stays the caller's
    EXPECT_THROW(NSData::dataWithBytesNoCopy(kept, UINT32_MAX), InvalidArgumentException);
}

TEST_F(NSDataTest, APoolWithoutMemoryDestroysNothingThatIsStillUsed) {
    const NSAutoreleasePool withTheSparePage;
    NSData::data();
    const Fault noPage(Call::allocate, /*skip=*/0, /*times=*/0, ENOMEM);
    for (int i = 0; i < 2; ++i) {
        const NSAutoreleasePool withTheLastPage; // which is there again afterwards
        NSData::data();
    }
    const NSAutoreleasePool withTheLastPage;
    NSData::data();
    const NSAutoreleasePool pool;
    NSObject *const object = NSObject::init().detach();
    {
        const qb::Kept found(object);
        object->release();
    }
    EXPECT_EQ(object->retainCount(), 1u);
    object->release();
    char kept[1];
    EXPECT_THROW(NSData::dataWithBytesNoCopy(kept, 1), std::bad_alloc);
    EXPECT_THROW(NSMutableData::dataWithBytesNoCopy(kept, 1), std::bad_alloc);
    EXPECT_THROW(made(NSData::cls(), "dataWithBytesNoCopy:length:", {&kept[0], 1}), std::bad_alloc);
}

TEST_F(NSDataTest, GivesPartsOfItsBytes) {
    NSData *const data = NSMutableData::dataWithData(dataOf("abcdef"));
    char buffer[8] = "-------";
    data->getBytes(buffer, NSMakeRange(4, 2));
    EXPECT_STREQ(buffer, "ef-----");
    data->getBytes(buffer, 3);
    EXPECT_STREQ(buffer, "abc----");
    data->getBytes(buffer);
    EXPECT_STREQ(buffer, "abcdef-");
    for (Class *asked : {NSData::cls(), NSMutableData::cls()})
        EXPECT_EQ(made(asked, "dataWithData:", {data}) + made(asked, "initWithData:", {data}),
                  "<61626364 6566><61626364 6566>");
    EXPECT_EQ(made(NSMutableData::cls(), "dataWithCapacity:", {9}), "<>");
    EXPECT_EQ(made(NSMutableData::cls(), "initWithLength:", {2}), "<0000>");
    EXPECT_EQ(answer(data, "mutableCopyWithZone:", {nullptr}), "<61626364 6566>");
    EXPECT_EQ(bytesOf(data->subdataWithRange(NSMakeRange(2, 3))), "cde");
    EXPECT_REASON(data->getBytes(buffer, NSMakeRange(6, 1)),
                  "NSMutableData getBytes:range: must have a range inside the 6 bytes.");
}

TEST_F(NSDataTest, EqualityHashAndDescriptionGoByBytes) {
    Random random;
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string bytes = randomBytes(random, length);
        std::string digits;
        for (std::size_t i = 0; i < length; ++i) {
            char pair[4];
            std::snprintf(pair, sizeof pair, i % 4 == 0 && i > 0 ? " %02x" : "%02x", bytes[i] & 0xFF);
            digits += pair;
        }
        NSData *const data = dataOf(bytes);
        ASSERT_EQ(data->description()->view(), "<" + digits + ">");
        ASSERT_TRUE(data->isEqual(data->description()->propertyList()));
    }
    NSData *const data = dataOf("abc");
    const Ref<NSMutableData> same = data->mutableCopy();
    EXPECT_TRUE(data->isEqual(same));
    EXPECT_EQ(data->hash(), same->hash());
    same->appendBytes("", 1);
    EXPECT_FALSE(data->isEqual(same));
    const Ref<NSData> copy = same->copy();
    same->setLength(0);
    EXPECT_EQ(copy->length(), 4u);
}

TEST_F(NSDataTest, LengthsGrowByZeroBytes) {
    NSMutableData *const data = NSMutableData::dataWithData(dataOf("abc"));
    data->setLength(2);
    data->increaseLengthBy(2);
    EXPECT_EQ(bytesOf(data), std::string("ab\0\0", 4));
    static_cast<char *>(data->mutableBytes())[3] = 'd';
    data->setLength(4);
    EXPECT_EQ(bytesOf(data), std::string("ab\0d", 4));
    EXPECT_EQ(bytesOf(NSMutableData::dataWithLength(3)), std::string(3, '\0'));
    EXPECT_THROW(data->increaseLengthBy(UINT32_MAX), InvalidArgumentException);
}

TEST_F(NSDataTest, BytesAreReplaced) {
    NSMutableData *const data = NSMutableData::dataWithData(dataOf("abcdef"));
    data->replaceBytesInRange(NSMakeRange(5, 3), "123");
    EXPECT_EQ(bytesOf(data), "abcde123");
    data->replaceBytesInRange(NSMakeRange(1, 4), "-", 1);
    EXPECT_EQ(bytesOf(data), "a-123");
    data->replaceBytesInRange(NSMakeRange(2, 0), data->bytes(), data->length());
    EXPECT_EQ(bytesOf(data), "a-a-123123");
    data->resetBytesInRange(NSMakeRange(8, 4));
    EXPECT_EQ(bytesOf(data), std::string("a-a-1231\0\0\0\0", 12));
    data->appendData(data);
    EXPECT_EQ(bytesOf(data), std::string("a-a-1231\0\0\0\0a-a-1231\0\0\0\0", 24));
    data->resetBytesInRange(NSMakeRange(24, 1)); // behind the last byte
    EXPECT_EQ(data->length(), 25u);
    data->setData(dataOf("x"));
    EXPECT_EQ(bytesOf(data), "x");
    NSData *const much = dataOf(std::string(1000, 'y'));
    const Fault fault(Call::reallocate, /*skip=*/0, /*times=*/1, ENOMEM);
    EXPECT_THROW(data->setData(much), std::bad_alloc);
    EXPECT_EQ(bytesOf(data), "x");
    EXPECT_REASON(
        data->replaceBytesInRange(NSMakeRange(2, 1), "y"),
        "NSMutableData replaceBytesInRange:withBytes:length: must have a range inside the 1 bytes.");
}

TEST_F(NSDataTest, WhatGrowsTakesNoMoreThanThereIs) {
    NSMutableData *const data = NSMutableData::dataWithData(dataOf("abcd"));
    NSMutableString *const text = NSMutableString::stringWith("abcd");
    NSMutableArray *const array = NSMutableArray::arrayWithCapacity(100);
    for (int i = 0; i < 100; ++i)
        array->addObject(NSNumber::numberWithInt(i));
    const Ref<NSMutableSet> set = NSMutableSet::initWithArray(array);
    const auto withoutTwiceTheMemory = [](auto add) {
        const Fault bytes(Call::reallocate, /*skip=*/0, /*times=*/1, ENOMEM);
        const Fault objects(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
        EXPECT_NO_THROW(add());
    };
    withoutTwiceTheMemory([&] { data->appendBytes("e", 1); });
    withoutTwiceTheMemory([&] { text->appendString("e"_ns); });
    withoutTwiceTheMemory([&] { array->addObject("e"_ns); });
    withoutTwiceTheMemory([&] { set->addObject("e"_ns); });
    EXPECT_EQ(bytesOf(data), text->view());
    EXPECT_EQ(array->count() + set->count(), 202u);
    std::uint64_t taken = 0;
    qb::growCapacity(8, 9, /*most=*/12, [&](std::uint64_t capacity) { taken = capacity; });
    EXPECT_EQ(taken, 12u);
    qb::growCapacity(1000, 1001, /*most=*/UINT32_MAX, [&](std::uint64_t capacity) {
        if (capacity > 1300)
            throw std::bad_alloc();
        taken = capacity;
    });
    EXPECT_EQ(taken, 1250u);
}

TEST_F(NSDataTest, BytesAreFoundInBothDirections) {
    const NSRange nowhere = {NSNotFound, 0};
    NSData *const data = dataOf("abcabc");
    const auto find = [&](const char *wanted, std::uint32_t options, NSRange range) {
        return data->rangeOfData(dataOf(wanted), options, range);
    };
    EXPECT_EQ(find("bc", 0, {2, 4}), NSMakeRange(4, 2));
    EXPECT_EQ(find("bc", NSBackwardsSearch, {0, 5}), NSMakeRange(1, 2));
    EXPECT_EQ(find("bc", NSAnchoredSearch, {1, 5}), NSMakeRange(1, 2));
    EXPECT_EQ(find("bc", NSAnchoredSearch | NSBackwardsSearch, {0, 6}), NSMakeRange(4, 2));
    EXPECT_EQ(find("", 0, {0, 6}), nowhere);
}
