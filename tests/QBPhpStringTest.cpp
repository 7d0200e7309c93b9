#include "support/CommandOutput.h"
#include "support/PoolFixture.h"
#include "support/SmallStack.h"
#include "support/TemporaryDirectory.h"

using QBPhpStringTest = PoolFixture;

// Trees of numbers that PHP reads as they are, with keys that it keeps apart.
static id randomTree(std::mt19937 &random, unsigned depth) {
    const std::uint32_t kind = random() % (depth == 0 ? 3 : 6);
    if (kind == 0)
        return NSNumber::numberWithInt(static_cast<std::int32_t>(random()));
    if (kind == 1)
        return NSNumber::numberWithLongLong(static_cast<std::int64_t>(std::uint64_t{random()} << 32));
    if (kind == 2)
        return NSNumber::numberWithDouble(static_cast<double>(random() | 1) / 1024 - 1e6);
    NSMutableArray *const array = NSMutableArray::array();
    NSMutableDictionary *const dictionary = NSMutableDictionary::dictionary();
    for (std::uint32_t left = random() % 5; left != 0; --left) {
        array->addObject(randomTree(random, depth - 1));
        dictionary->setObjectForKey(array->lastObject(),
                                    NSNumber::numberWithInt(static_cast<std::int32_t>(random())));
    }
    return kind < 5 ? static_cast<id>(array) : dictionary;
}

// What the program below prints of the value: the numbers, which need no exponent, and all keys.
static std::string shown(id value) {
    std::string text = "[";
    std::uint32_t index = 0;
    if (auto *const array = qb::castOrNil<NSArray>(value)) {
        for (id element : *array)
            text += std::to_string(index++) + ":" + shown(element);
        return text + "]";
    }
    if (auto *const dictionary = qb::castOrNil<NSDictionary>(value)) {
        for (const auto &[key, object] : *dictionary)
            text += describe(key) + ":" + shown(object);
        return text + "]";
    }
    return describe(value) + ";";
}

constexpr const char *kShowInPhp = R"(<?php
function shown($value) {
    if (!is_array($value)) return json_encode($value) . ';';
    $text = '[';
    foreach ($value as $key => $element) $text .= $key . ':' . shown($element);
    return $text . ']';
}
)";

TEST_F(QBPhpStringTest, SubclassesHaveWhatTheirEnumeratorsGive) {
    static NSArray *shown;
    shown = NSArray::arrayWithObjects(NSNumber::numberWithInt(2), NSNumber::numberWithInt(1));
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
        const NSAutoreleasePool pool;
        EXPECT_EQ(arraysInArrays(512)->asPhpString()->length(), 512u * 7 + 25);
        NSMutableArray *const circle = NSMutableArray::array();
        circle->addObject(circle);
        circle->addObject(circle);
        const Ref<NSArray> deep = arraysInArrays(513);
        for (NSArray *value : {deep.get(), static_cast<NSArray *>(circle)})
            expectError(qb::kErrorTooDeep, "512", [&] { EXPECT_EQ(value->asPhpString(), nullptr); });
        circle->removeAllObjects();
        EXPECT_EQ(describe(circle->asPhpString()), "array()"); // and the next one is none the worse
    }));
}

TEST_F(QBPhpStringTest, PhpReadsNumbersAndContainers) {
    if (outputOf("php -v 2>&1").empty())
        GTEST_SKIP() << "php is not installed";
    std::string program = kShowInPhp;
    std::string expected;
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const id tree = randomTree(random, 5);
        program += "echo shown(" + describe(tree->asPhpString()) + "), \"\\n\";\n";
        expected += shown(tree) + "\n";
    }
    const TemporaryDirectory directory;
    directory.write("program.php", program);
    EXPECT_EQ(outputOf("php -n " + directory / "program.php" + " 2>&1"), expected);
}
