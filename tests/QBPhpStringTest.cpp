#include "support/CommandOutput.h"
#include "support/DirectoryFixture.h"

using QBPhpStringTest = DirectoryFixture;

// A tree of numbers that PHP reads as they are, with keys that it keeps apart, and its text in JSON.
static std::pair<id, std::string> randomTree(std::mt19937 &random, unsigned depth) {
    const std::uint32_t kind = random() % (depth == 0 ? 3 : 6);
    if (kind < 3) {
        const auto wide = static_cast<std::int64_t>(std::uint64_t{random()} << 32), narrow = wide >> 32;
        NSNumber *const values[] = {number(static_cast<int>(narrow)), NSNumber::numberWithLongLong(wide),
                                    NSNumber::numberWithDouble(static_cast<double>(narrow | 1) / 1024)};
        return {values[kind], describe(values[kind])};
    }
    NSMutableArray *const array = NSMutableArray::array();
    NSMutableDictionary *const dictionary = NSMutableDictionary::dictionary();
    std::string list, entries;
    for (std::uint32_t left = random() % 5; left != 0; --left) {
        const auto [element, text] = randomTree(random, depth - 1);
        NSNumber *const key = number(static_cast<std::int32_t>(random()));
        array->addObject(element);
        dictionary->setObjectForKey(element, key);
        list += (list.empty() ? "" : ",") + text;
        entries += (entries.empty() ? "\"" : ",\"") + describe(key) + "\":" + text;
    }
    if (kind < 5)
        return {array, "[" + list + "]"};
    return {dictionary, entries.empty() ? "[]" : "{" + entries + "}"};
}

TEST_F(QBPhpStringTest, SubclassesHaveWhatTheirEnumeratorsGive) {
    static NSArray *shown;
    shown = NSArray::arrayWithObjects(number(2), number(1));
    struct Shown : NSMutableDictionary {
        NSEnumerator *keyEnumerator() const override { return shown->objectEnumerator(); }
        id objectForKey(id key) const override { return key == shown->lastObject() ? nullptr : key; }
    };
    struct Reversed : NSMutableArray {
        NSEnumerator *objectEnumerator() const override { return shown->objectEnumerator(); }
    };
    const auto dictionary = Ref<Shown>::adopt(new Shown);
    const auto array = Ref<Reversed>::adopt(new Reversed);
    EXPECT_EQ(describe(dictionary->asPhpString()), "array(2 => 2)");
    EXPECT_EQ(describe(array->asPhpString()), "array(2, 1)");
}

// The texts of numbers, strings and containers are read along their trees in fuzz/PhpText.cpp.
TEST_F(QBPhpStringTest, OtherValuesAreNotImplementedCorrectly) {
    NSArray *const values = NSArray::arrayWithObjects(NSNumber::numberWithLongLong(INT64_MIN),
                                                      QBBool::trueBoolean(), QBNil::value());
    EXPECT_EQ(describe(values->asPhpString()),
              "array(-9223372036854775808, not implemented correctly, not implemented correctly)");
}

TEST_F(QBPhpStringTest, DepthIsBounded) {
    ASSERT_TRUE(runOnSmallStack([] {
        EXPECT_EQ(arraysInArrays(512)->asPhpString()->length(), 512u * 7 + 25);
        NSMutableArray *const circle = NSMutableArray::array();
        circle->addObject(circle);
        circle->addObject(circle);
        const Ref<NSArray> deep = arraysInArrays(513);
        for (NSArray *value : {deep.get(), static_cast<NSArray *>(circle)})
            EXPECT_ERROR(qb::kErrorTooDeep, "512", EXPECT_EQ(value->asPhpString(), nullptr));
        circle->removeAllObjects();
        EXPECT_EQ(describe(circle->asPhpString()), "array()"); // and the next one is none the worse
    }));
}

TEST_F(QBPhpStringTest, PhpReadsNumbersAndContainers) {
    if (outputOf("php -v 2>&1").empty())
        GTEST_SKIP() << "php is not installed";
    std::string program = "<?php\n", expected;
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto [tree, text] = randomTree(random, 5);
        program += "echo json_encode(" + describe(tree->asPhpString()) + "), \"\\n\";\n";
        expected += text + "\n";
    }
    directory_.write("program.php", program);
    EXPECT_EQ(outputOf("php -n " + directory_ / "program.php" + " 2>&1"), expected);
}
