#include <QBFoundation/Runtime/Memory.h>

#include "System/Faults.h"
#include "Text/RandomText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <set>
#include <vector>

using qb::sys::Call;
using qb::sys::Fault;

struct Block {
    char *bytes;
    std::size_t size;
};

static Block made(std::size_t size) {
    auto *const bytes = static_cast<char *>(qb::allocateObject(size));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % qb::kSizeStep, 0u);
    std::memset(bytes, static_cast<int>(size % 251), size);
    return {bytes, size};
}

static void giveBack(const Block &block) {
    const auto isWhole = [&](char byte) { return byte == static_cast<char>(block.size % 251); };
    ASSERT_TRUE(std::all_of(block.bytes, block.bytes + block.size, isWhole)) << block.size;
    qb::freeObject(block.bytes, block.size);
}

TEST(MemoryTest, BlocksOfAllSizesKeepTheirBytesAndAreCounted) {
    Random random;
    const std::int64_t before = qb::pooledObjectsInUse();
    std::vector<Block> blocks;
    for (int round = 0; round < 12; ++round) {
        const std::size_t largest = round % 3 == 0 ? 600 : 64;
        for (int i = 0; i < 20000; ++i)
            blocks.push_back(made(random.below(largest + 1)));
        std::shuffle(blocks.begin(), blocks.end(), std::mt19937(4));
        const std::size_t kept = round % 4 == 3 ? 0 : 1000;
        for (; blocks.size() > kept; blocks.pop_back())
            giveBack(blocks.back());
    }
    EXPECT_EQ(qb::pooledObjectsInUse(), before);
}

#ifndef QB_NO_FREE_LISTS
TEST(MemoryTest, WhatASizeNoLongerNeedsServesOthers) {
    std::set<std::uintptr_t> places[2]; // by 64 KiB
    for (const std::size_t size : {48, 496}) {
        std::vector<Block> blocks;
        for (int i = 0; i < 20000; ++i) {
            blocks.push_back(made(size));
            places[size == 496].insert(reinterpret_cast<std::uintptr_t>(blocks.back().bytes) >> 16);
        }
        std::for_each(blocks.begin(), blocks.end(), giveBack);
    }
    std::vector<std::uintptr_t> common;
    std::ranges::set_intersection(places[0], places[1], std::back_inserter(common));
    EXPECT_GT(common.size(), 5u); // of some 15
}

TEST(MemoryTest, SmallRegionsServeWhereThereIsNoMemoryForLargeOnes) {
    std::vector<Block> blocks;
    while (blocks.size() < 4000) // more than the first region, which is a small one, has room for
        blocks.push_back(made(512));
    {
        const Fault noLargeOne(Call::allocate, /*skip=*/0, /*times=*/1, ENOMEM);
        while (noLargeOne.hits() == 0)
            blocks.push_back(made(512));
        const Fault nothing(Call::allocate, /*skip=*/0, /*times=*/0, ENOMEM);
        EXPECT_THROW(for (;;) blocks.push_back(made(512)), std::bad_alloc);
        EXPECT_EQ(nothing.hits(), 2u);
    }
    blocks.push_back(made(512));
    std::for_each(blocks.begin(), blocks.end(), giveBack);
}
#endif
