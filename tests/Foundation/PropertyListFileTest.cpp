#include "support/DirectoryFixture.h"

using PropertyListFileTest = DirectoryFixture;

TEST_F(PropertyListFileTest, WrittenFilesAreReadBackEqual) {
    NSDictionary *const dictionary =
        NSDictionary::dictionaryWith({{"a a"_ns, NSArray::arrayWithObject("y z"_ns)}});
    EXPECT_TRUE(dictionary->writeToFile(path("d"), /*atomically=*/YES));
    EXPECT_EQ(directory_.read("d"), dictionary->description()->view());
    EXPECT_TRUE(dictionary->isEqual(NSDictionary::dictionaryWithContentsOfFile(path("d"))));
    NSArray *const array = dictionary->allValues();
    EXPECT_TRUE(array->writeToFile(path("a"), /*atomically=*/NO));
    const id read = send<id>(NSMutableArray::cls(), "arrayWithContentsOfFile:"_sel, path("a"));
    EXPECT_TRUE(read->isMemberOfClass(NSMutableArray::cls()) && read->isEqual(array));
}

TEST_F(PropertyListFileTest, WhatIsWrongWithAFileIsOneError) {
    directory_.write("broken", "{\n  a = 1;\n  b 2;\n}");
    directory_.write("list", "// a list\n  (a)");
    directory_.write("map", "{}");
    const auto dictionaryIn = [&](const char *name) {
        EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(path(name)), nullptr);
    };
    EXPECT_ERROR(900004, directory_ / "broken 3 5 '='", dictionaryIn("broken"));
    EXPECT_ERROR(900004, directory_ / "list 2 3 a dictionary", dictionaryIn("list"));
    EXPECT_ERROR(900004, directory_ / "map 1 1 an array",
                 EXPECT_EQ(NSArray::arrayWithContentsOfFile(path("map")), nullptr));
}

TEST_F(PropertyListFileTest, TooDeepListIsNotWritten) {
    directory_.write("file", "old");
    const Ref<NSArray> deep = arraysInArrays(513);
    EXPECT_ERROR(900003, "512", EXPECT_FALSE(deep->writeToFile(path("file"), /*atomically=*/NO)));
    EXPECT_EQ(directory_.read("file"), "old");
}

TEST_F(PropertyListFileTest, EntriesStandWithoutBracesToo) {
    NSDictionary *const read = "\xEF\xBB\xBF/* texts */ hello = \"Guten Tag\";\n\"a b\";\nlist = (x, y)"_ns
                                   ->propertyListFromStringsFileFormat();
    EXPECT_EQ(describe(read), "{hello = Guten Tag; a b = a b; list = (x, y); }");
    NSDictionary *const texts = NSDictionary::dictionaryWith({{"a b"_ns, "\n"_ns}, {"c"_ns, number(5)}});
    EXPECT_EQ(texts->descriptionInStringsFileFormat()->view(), "\"a b\" = \"\\n\";\nc = 5;\n");
    for (const auto &[text, values] :
         {std::pair("a = 1 }", "1 7 ';'"), std::pair("a = 1; }", "1 8 a key"),
          std::pair("a; b; a;", "1 7 a key that does not stand in the dictionary already")}) {
        expectError(900001, values, [text = text] {
            EXPECT_EQ(NSString::stringWith(text)->propertyListFromStringsFileFormat(), nullptr);
        });
    }
}
