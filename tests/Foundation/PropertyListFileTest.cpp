#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Runtime/Send.h>

#include "System/Faults.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

class PropertyListFileTest : public PoolFixture {
protected:
    TemporaryDirectory directory_;
};

} // namespace

TEST_F(PropertyListFileTest, WrittenFilesAreReadBackEqual) {
    NSDictionary *const dictionary = NSDictionary::dictionaryWith(
        {{"b"_ns, NSArray::arrayWithObjects("x"_ns, "y z"_ns)}, {"a a"_ns, NSDictionary::dictionary()}});
    for (const BOOL atomically : {NO, YES}) {
        EXPECT_TRUE(dictionary->writeToFile(directory_.string("d"), atomically));
        EXPECT_EQ(directory_.read("d"), dictionary->description()->view());
        EXPECT_TRUE(dictionary->isEqual(NSDictionary::dictionaryWithContentsOfFile(directory_.string("d"))));
        NSArray *const array = dictionary->allValues();
        EXPECT_TRUE(array->writeToFile(directory_.string("a"), atomically));
        EXPECT_TRUE(array->isEqual(NSArray::arrayWithContentsOfFile(directory_.string("a"))));
    }
    EXPECT_EQ(directory_.names(), (std::vector<std::string>{"a", "d"}));
}

TEST_F(PropertyListFileTest, MakersGiveTheClassThatWasAsked) {
    directory_.write("list", "\xEF\xBB\xBF(x, y)\n");
    directory_.write("map", "{ k = v; }\n");
    NSMutableArray *const list = NSMutableArray::arrayWithContentsOfFile(directory_.string("list"));
    list->addObject("z"_ns);
    EXPECT_EQ(describe(list), "(x, y, z)");
    NSMutableDictionary *const map =
        NSMutableDictionary::dictionaryWithContentsOfFile(directory_.string("map"));
    map->setObjectForKey("w"_ns, "k"_ns);
    EXPECT_EQ(describe(map), "{k = w; }");
    const auto made = [&](Class *cls, SEL maker, const char *name) {
        const id object = send<id>(cls, maker, directory_.string(name));
        return object && object->isMemberOfClass(cls) ? describe(object) : "another class";
    };
    EXPECT_EQ(made(NSMutableArray::cls(), "arrayWithContentsOfFile:"_sel, "list"), "(x, y)");
    EXPECT_EQ(made(NSArray::cls(), "arrayWithContentsOfFile:"_sel, "list"), "(x, y)");
    EXPECT_EQ(made(NSMutableDictionary::cls(), "dictionaryWithContentsOfFile:"_sel, "map"), "{k = v; }");
    const auto owned =
        send<Ref<NSArray>>(NSArray::cls(), "initWithContentsOfFile:"_sel, directory_.string("list"));
    EXPECT_EQ(owned->retainCount(), 1u);
}

TEST_F(PropertyListFileTest, WhatIsWrongWithAFileIsOneError) {
    directory_.write("broken", "{\n  a = 1;\n  b 2;\n}");
    directory_.write("list", "// a list\n  (a)");
    directory_.write("map", "{}");
    directory_.write("empty", "");
    directory_.makeDirectory("directory");
    struct Row {
        std::string name;
        bool isDictionary;
        int number;
        std::string values;
    };
    const Row rows[] = {
        {"broken", true, 900004, " 3 5 '='"},
        {"broken", false, 900004, " 3 5 '='"},
        {"list", true, 900004, " 2 3 a dictionary"},
        {"map", false, 900004, " 1 1 an array"},
        {"empty", true, 900004, " 1 1 a value"},
        {"missing", true, 100039, ""},
        {"missing/x", false, 100039, ""},
        {"map/x", false, 100023, " Not a directory"},
        {"directory", true, 100023, " Is a directory"},
        {std::string("m\0p", 3), true, 100023, " Invalid argument"},
    };
    for (const Row &row : rows) {
        NSString *const path = directory_.string(row.name);
        ErrorExpectation error(row.number);
        EXPECT_EQ(row.isDictionary ? static_cast<id>(NSDictionary::dictionaryWithContentsOfFile(path))
                                   : NSMutableArray::arrayWithContentsOfFile(path),
                  nullptr);
        EXPECT_EQ(error.values(), std::string(path->view()) + row.values);
    }
    using qb::sys::Call;
    for (const auto &[call, cause] : {std::pair(Call::open, EACCES), std::pair(Call::read, EIO)}) {
        qb::sys::Fault fault(call, /*skip=*/0, /*times=*/1, cause);
        ErrorExpectation error(100023);
        EXPECT_EQ(NSArray::arrayWithContentsOfFile(directory_.string("list")), nullptr);
        EXPECT_EQ(error.values(), directory_ / "list" + (" " + std::string(std::strerror(cause))));
    }
}

TEST_F(PropertyListFileTest, FailedWriteTellsAndLeavesTheOldFile) {
    directory_.write("file", "old");
    NSString *const path = directory_.string("file");
    {
        qb::sys::Fault fault(qb::sys::Call::fwrite, /*skip=*/0, /*times=*/1, ENOSPC);
        ErrorExpectation error(100024);
        EXPECT_FALSE(NSArray::arrayWithObject("x"_ns)->writeToFile(path, /*atomically=*/YES));
    }
    Ref<NSArray> deep = NSArray::init();
    for (int i = 0; i < 512; ++i)
        deep = NSArray::initWith({deep.get()});
    {
        ErrorExpectation error(900003);
        EXPECT_FALSE(deep->writeToFile(path, /*atomically=*/NO));
    }
    EXPECT_EQ(directory_.read("file"), "old");
    EXPECT_EQ(directory_.names(), std::vector<std::string>{"file"});

    ERRORHANDLER->raiseErrorInFile("test", 1, 990001); // which is none of this operation's
    EXPECT_TRUE(NSDictionary::dictionary()->writeToFile(path, /*atomically=*/YES));
    EXPECT_EQ(directory_.read("file"), "{\n}");
    EXPECT_EQ(describe(ERRORHANDLER->errorIds()), "(990001)");
    ERRORHANDLER->clearErrorStack();
}

TEST_F(PropertyListFileTest, NilPathThrows) {
    EXPECT_REASON(NSDictionary::dictionaryWithContentsOfFile(nullptr),
                  "NSDictionary initWithContentsOfFile: must have a path that is not nil.");
    EXPECT_REASON(NSArray::array()->writeToFile(nullptr, NO),
                  "NSArray writeToFile:atomically: must have a path that is not nil.");
}

TEST_F(PropertyListFileTest, EntriesStandWithoutBracesToo) {
    NSDictionary *const read = "/* texts */ hello = \"Guten Tag\";\n\"a b\";\nlist = (x, y);"_ns
                                   ->propertyListFromStringsFileFormat();
    EXPECT_EQ(describe(read), "{hello = Guten Tag; a b = a b; list = (x, y); }");
    NSDictionary *const texts =
        NSDictionary::dictionaryWith({{"a b"_ns, "\n"_ns}, {"c"_ns, NSNumber::numberWithInt(5)}});
    EXPECT_EQ(texts->descriptionInStringsFileFormat()->view(), "\"a b\" = \"\\n\";\nc = 5;\n");
    EXPECT_EQ(describe(texts->descriptionInStringsFileFormat()->propertyListFromStringsFileFormat()),
              "{a b = \n; c = 5; }");
    EXPECT_EQ(""_ns->propertyListFromStringsFileFormat()->count(), 0u);
    for (const auto &[text, values] :
         {std::pair("a = 1;\nb", "2 2 '='"), std::pair("a = 1", "1 6 ';' or '}'"),
          std::pair("a = 1; }", "1 8 a key or '}'"),
          std::pair("a; b; a;", "1 7 a key that does not stand in the dictionary already")}) {
        ErrorExpectation error(900001);
        EXPECT_EQ(NSString::stringWith(text)->propertyListFromStringsFileFormat(), nullptr);
        EXPECT_EQ(error.values(), values);
    }
}
