#include "support/PoolFixture.h"

using QBPropertyListOutputStreamTest = PoolFixture;

namespace {

// A client's stream, which sees each operation.
struct Watcher : QBPropertyListOutputStream {
    void _writeString(NSString *string) override {
        ++strings;
        QBPropertyListOutputStream::_writeString(string);
    }
    void _writeObjectForKey(id object, id key) override {
        ++entries;
        QBPropertyListOutputStream::_writeObjectForKey(object, key);
    }
    void _writeBuffer(const void *buffer, std::uint32_t length) override {
        ++writes;
        QBPropertyListOutputStream::_writeBuffer(buffer, length);
    }
    static Ref<Watcher> init() { return qb::init<Watcher>(&Watcher::setUp); }

    int strings = 0, entries = 0, writes = 0;
};

std::string textIn(const QBPropertyListOutputStream &stream) {
    return bytesOf(stream.targetData());
}

std::string written(id value) {
    QBPropertyListOutputStream *const stream = QBPropertyListOutputStream::stream();
    stream->writeObject(value);
    return textIn(*stream);
}

// Any bytes, those that need quoting more often than others.
NSString *randomString(Random &random) {
    const std::string nul(1, '\0');
    const std::string pieces[] = {"word", "/", "//",   "/*",       "\"",   "\\", " ",
                                  "\n",   nul, "\x7F", "\xC3\xA9", "\xFF", "1"};
    return NSString::stringWith(randomText(random, random.below(random.below(8) ? 12 : 300), pieces));
}

id randomTree(Random &random, int depth) {
    const std::size_t kind = random.below(depth > 0 ? 6 : 3);
    if (kind < 2)
        return randomString(random);
    if (kind == 2)
        return randomString(random)->asData();
    NSMutableArray *const array = NSMutableArray::array();
    NSMutableDictionary *const dictionary = NSMutableDictionary::dictionary();
    for (std::size_t count = random.below(6); count != 0; --count) {
        array->addObject(randomTree(random, depth - 1));
        dictionary->setObjectForKey(array->lastObject(), randomString(random));
    }
    return kind == 3 ? static_cast<id>(array) : dictionary;
}

// Writes meddlers by way of an enumerator that only the array keeps.
void writeEnumerator(const Meddlers &it, QBDataOutputStream *stream) {
    inOwnPool([&] { it.array->replaceObjectAtIndex(0, it.set->allObjects()->objectEnumerator()); });
    stream->writeObject(it.array);
}

} // namespace

// How strings and containers stand is PropertyListText's own test; random trees compare with it below.
TEST_F(QBPropertyListOutputStreamTest, EnumeratorsStandAsListsNumbersAsStringsAndNilLikeValuesNowhere) {
    const id null = QBNil::value();
    EXPECT_EQ(written(NSArray::arrayWithObjects("x"_ns, "y"_ns)->objectEnumerator()), "(\n  x,\n  y\n)");
    EXPECT_EQ(written(NSNumber::numberWithDouble(1e100)), "\"1e+100\"");
    EXPECT_EQ(written(NSSet::setWithObject("a"_ns)), "\"(\\n  a\\n)\"");
    EXPECT_EQ(written(NSArray::arrayWithObjects(null, "x"_ns, null, "y"_ns, null)), "(\n  x,\n  y\n)");
    EXPECT_EQ(written(NSDictionary::dictionaryWith({{"a"_ns, null}, {null, "b"_ns}, {"c"_ns, "d"_ns}})),
              "{\n  c = d;\n}");
    EXPECT_EQ(written(null), "");
}

TEST_F(QBPropertyListOutputStreamTest, ObjectsThatAnEnumeratorMakesAreNotKept) {
    struct Maker : NSEnumerator {
        id nextObject() override {
            EXPECT_EQ(last ? last->retainCount() : 1, 1u);
            last = NSMutableString::stringWith("one of many");
            return --left > 0 ? last.get() : nullptr;
        }
        Ref<NSString> last;
        int left = 3;
    };
    QBPropertyListOutputStream::stream()->writeObject(Ref<Maker>::adopt(new Maker).get());
}

TEST_F(QBPropertyListOutputStreamTest, RandomTreesAreReadBackEqualAndEqualTheirDescription) {
    Random random;
    for (int i = 0; i < 300 && !HasFailure(); ++i) {
        const NSAutoreleasePool pool;
        const id tree = randomTree(random, 5);
        const std::string text = written(tree);
        const id readBack = NSString::stringWith(text)->propertyList();
        ASSERT_NE(readBack, nullptr) << text;
        EXPECT_TRUE(readBack->isEqual(tree)) << text;
        const bool isContainer = qb::castOrNil<NSArray>(tree) || qb::castOrNil<NSDictionary>(tree);
        EXPECT_EQ(isContainer ? tree->description()->view() : text, text);
        const Ref<Watcher> watcher = Watcher::init();
        watcher->writeObject(tree);
        EXPECT_EQ(textIn(*watcher), text);
    }
}

TEST_F(QBPropertyListOutputStreamTest, SubclassSeesEachOperation) {
    const Ref<Watcher> stream = Watcher::init();
    stream->writeObject(
        NSDictionary::dictionaryWith({{"a"_ns, NSArray::arrayWithObject("x"_ns)}, {"b"_ns, "c"_ns}}));
    EXPECT_EQ(stream->strings, 4);
    EXPECT_EQ(stream->entries, 2);
    EXPECT_EQ(stream->writes, 17);
}

TEST_F(QBPropertyListOutputStreamTest, MillionLevelsRaiseOneErrorAndNeedLittleStack) {
    std::string text;
    expectError(900003, "512", [&text] {
        ASSERT_TRUE(runOnSmallStack([&text] {
            const Ref<NSArray> deep = arraysInArrays(1'000'000);
            text = written(NSArray::arrayWithObjects("first"_ns, deep.get(), "left out"_ns));
        }));
    });
    EXPECT_EQ(std::count(text.begin(), text.end(), '('), 512);
    EXPECT_NE(text.find("\n" + std::string(78, ' ') + "...\n"), std::string::npos);
    EXPECT_EQ(text.find(std::string(79, ' ')), std::string::npos);
    EXPECT_EQ(text.find("left out"), std::string::npos);
}

TEST_F(QBPropertyListOutputStreamTest, DepthIsBoundedInEachStreamAndEndsWithTheValue) {
    const Ref<NSArray> deepest = arraysInArrays(512);
    NSMutableDictionary *const loop = NSMutableDictionary::dictionary();
    for (id key : {"a"_ns, "b"_ns}) // written in full, it would never end
        loop->setObjectForKey(loop, key);
    const Ref<Watcher> watcher = Watcher::init();
    for (QBDataOutputStream *stream :
         {QBDataOutputStream::stream(), static_cast<QBDataOutputStream *>(watcher.get())}) {
        EXPECT_ERROR(900003, "512", stream->writeObject(loop));
        stream->writeObject(deepest); // is no error
    }
    loop->removeAllObjects();
}

TEST_F(QBPropertyListOutputStreamTest, ContainersStayWhileTheirElementsAreWritten) {
    meddle([](auto &it, auto &) { QBDataOutputStream::stream()->writeObject(it.array); });
    meddle([](auto &it, auto &) { QBDataOutputStream::stream()->writeObject(it.dictionary); });
    meddle([](auto &it, auto &) { writeEnumerator(it, QBDataOutputStream::stream()); });
    meddle([](auto &it, auto &) { writeEnumerator(it, QBPropertyListOutputStream::stream()); });
}
