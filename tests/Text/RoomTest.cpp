#include "Text/Room.h"

#include <gtest/gtest.h>

using qb::text::requireRoom;

TEST(RoomTest, ThereIsNoneBeyondTheLongestText) {
    const std::string text = "ab";
    requireRoom(text, text.max_size() - 2);
    for (const std::uint64_t more : {std::uint64_t{text.max_size() - 1}, UINT64_MAX})
        EXPECT_THROW(requireRoom(text, more), std::bad_alloc);
}
