#include "Foundation/PropertyListText.h"

#include "support/PoolFixture.h"

using PropertyListTextTest = PoolFixture;
using namespace std::string_view_literals;

TEST_F(PropertyListTextTest, StringsStandBareOrQuoted) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"/usr/lib-1.2:$x_y", "/usr/lib-1.2:$x_y"},
        {"", "\"\""},
        {"http://x", "\"http://x\""},
        {"a/*", "\"a/*\""},
        {"\a\b\t\n\v\f\r", "\"\\a\\b\\t\\n\\v\\f\\r\""},
        {"\0\1\x1b\x7f"sv, "\"\\000\\001\\033\\177\""},
        {"\xED\xA0\x80", "\"\\355\\240\\200\""}, // a surrogate
        {"\xC3\xBC\xC3\n\xE2\x82", "\"\xC3\xBC\\303\\n\\342\\202\""},
    };
    for (const auto &[text, expected] : rows) {
        std::string quoted = "k = ";
        qb::appendPropertyListString(quoted, text);
        EXPECT_EQ(quoted, "k = " + std::string(expected));
    }
}

TEST_F(PropertyListTextTest, ContainersAreIndented) {
    NSDictionary *const value = NSDictionary::dictionaryWith(
        {{"a"_ns, NSArray::arrayWithObjects("x"_ns, QBNil::value(), "y z"_ns)},
         {"b b"_ns, NSDictionary::dictionaryWithObjectForKey(number(-5), "c"_ns)},
         {"gone"_ns, QBNil::value()},
         {QBNil::value(), "gone"_ns},
         {"d"_ns, NSData::dataWithBytes("\x0F\xBD\x77\x71\xC2", 5)},
         {"f"_ns, NSSet::setWithObject(NSDictionary::dictionary())},
         {NSArray::arrayWithObject(QBNil::value()), number(7)}});
    EXPECT_EQ(value->description()->view(), "{\n"
                                            "  a = (\n    x,\n    \"y z\"\n  );\n"
                                            "  \"b b\" = {\n    c = -5;\n  };\n"
                                            "  d = <0fbd7771 c2>;\n"
                                            "  f = (\n    {\n    }\n  );\n"
                                            "  (\n  ) = 7;\n"
                                            "}");
}

TEST_F(PropertyListTextTest, DepthIndentsBy78BlanksAtMostAndEndsInDots) {
    Ref<NSArray> list = NSArray::initWith({"end"_ns});
    std::string text;
    ASSERT_TRUE(runOnSmallStack([&] {
        for (std::size_t i = 1; i < 100'000; ++i)
            list = NSArray::initWith({list.get(), "x"_ns});
        text = list->description()->view();
        list = nullptr;
    }));
    EXPECT_EQ(std::count(text.begin(), text.end(), '('), qb::kDeepestDescription);
    EXPECT_NE(text.find("\n" + std::string(78, ' ') + "...,\n" + std::string(78, ' ') + "x\n"),
              std::string::npos);
    EXPECT_EQ(text.find(std::string(79, ' ')), std::string::npos);

    NSMutableArray *const loop = NSMutableArray::arrayWithObject("a"_ns);
    loop->addObject(loop);
    EXPECT_EQ(loop->description()->view(), "(\n  a,\n  ...\n)");
    loop->removeAllObjects();
}

TEST_F(PropertyListTextTest, ValuesMayChangeWhatIsWritten) {
    meddle([](auto &it, auto &) { it.array->description(); });
    meddle([](auto &it, auto &) { it.dictionary->description(); });
    meddle([](auto &it, auto &) { QBPropertyListOutputStream::init()->writeObject(it.array); });
    meddle([](auto &it, auto &) { QBPropertyListOutputStream::init()->writeObject(it.dictionary); });
    meddle([](auto &it, auto &other) {
        QBPropertyListOutputStream::init()->_writeObjectForKey(other.single, it.single);
    });
}
