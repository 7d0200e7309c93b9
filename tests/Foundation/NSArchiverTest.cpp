#include "support/DirectoryFixture.h"

using namespace std::string_literals;
using NSArchiverTest = DirectoryFixture;

namespace {

/// A client's class whose objects know those that own them.
struct TreeNode : ClientClass<TreeNode, NSObject, "TreeNode"> {
    static Operations operations() {
        return {qb::initialiser<"initWithCoder:">(&TreeNode::setUpWithCoder),
                qb::method<"encodeWithCoder:">(&TreeNode::encodeWithCoder)};
    }
    static TreeNode *node() { return qb::init<TreeNode>(&TreeNode::setUp).autorelease(); }

    void encodeWithCoder(NSCoder *coder) const override {
        onEncoding();
        coder->encodeObject(children, "children"_ns);
        coder->encodeConditionalObject(parent, "parent"_ns);
    }

    Ref<NSMutableArray> children = NSMutableArray::init();
    TreeNode *parent = nullptr; // not retained
    std::function<void()> onEncoding = [] {};
    static inline std::function<void(NSCoder *)> onDecoding = [](NSCoder *) {};
    static inline int made = 0;

    TreeNode() { ++made; }

    BOOL setUpWithCoder(NSCoder *coder) override {
        onDecoding(coder);
        parent = qb::castOrNil<TreeNode>(coder->decodeObjectForKey("parent"_ns));
        children = qb::castOrNil<NSMutableArray>(coder->decodeObjectForKey("children"_ns));
        return children != nullptr;
    }
};

/// One that has no copies.
struct Leaf : ClientClass<Leaf, NSObject, "Leaf"> {
    static Operations operations() { return {qb::initialiser<"initWithCoder:">(&Leaf::setUpWithCoder)}; }
    BOOL setUpWithCoder(NSCoder *) override { return YES; }
};

/// A container that is never empty.
template <class Base, qb::FixedString name, auto fill>
struct Filled : ClientClass<Filled<Base, name, fill>, Base, name> {
    Filled() { fill(*this); }
};
constexpr auto addX = [](auto &filled) { filled.addObject("x"_ns); };
using FilledArray = Filled<NSMutableArray, "FilledArray", addX>;
using FilledSet = Filled<NSMutableSet, "FilledSet", addX>;
using FilledDictionary =
    Filled<NSMutableDictionary, "FilledDictionary", [](auto &it) { it.setObjectForKey("x"_ns, "x"_ns); }>;
using FilledData = Filled<NSMutableData, "FilledData", [](auto &it) { it.appendBytes("x", 1); }>;
using FilledCharacters =
    Filled<NSMutableCharacterSet, "FilledCharacters", [](auto &it) { it.addCharactersInString("x"_ns); }>;

NSArray *nodeClasses() {
    return NSUnarchiver::valueClasses()->arrayByAddingObject(TreeNode::cls());
}

/// A value of each class, and of each number's type, with edge values.
NSMutableArray *valuesOfEachClass(Random &random) {
    NSTimeZone *const berlin = NSTimeZone::timeZoneWithName("Europe/Berlin"_ns);
    NSCharacterSet *const set = NSCharacterSet::characterSetWithCharactersInString("ac€😀\xFF"_ns);
    NSMutableArray *const values = NSMutableArray::arrayWithObjects(
        QBNil::value(), NSValue::valueWithRange(NSMakeRange(0x10FFFF, UINT32_MAX)), berlin, NSTimeZone::gmt(),
        NSTimeZone::timeZoneWithAbbreviation("CEST"_ns), NSTimeZone::timeZoneForSecondsFromGMT(-5400),
        NSTimeZone::timeZoneWithName("EST DST"_ns),
        NSDate::dateWithTimeIntervalSinceReferenceDate(-5e8 + 0.25), NSCharacterSet::letterCharacterSet(),
        set, set->mutableCopy().autorelease(), set->invertedSet());
    for (const double real : {0.1, -1.5e-300, HUGE_VAL})
        values->addObject(NSNumber::numberWithDouble(real));
    for (const std::int64_t edge :
         {INT64_MIN, std::int64_t{INT32_MIN}, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1},
          std::int64_t{INT32_MAX}, std::int64_t{UINT32_MAX}, INT64_MAX})
        for (NSNumber *number :
             {NSNumber::numberWithBool(edge != 0), NSNumber::numberWithInt(static_cast<std::int32_t>(edge)),
              NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(edge)),
              NSNumber::numberWithLongLong(edge),
              NSNumber::numberWithUnsignedLongLong(static_cast<std::uint64_t>(edge))})
            values->addObject(number);
    for (NSString *format : {"%H:%M"_ns, static_cast<NSString *>(nullptr)}) {
        NSCalendarDate *const shown = NSCalendarDate::dateAt(1'000'000'000, berlin);
        shown->setCalendarFormat(format);
        values->addObject(shown);
    }
    for (const std::size_t length : {0, 1, 127, 128, 20000}) {
        NSString *const text = string(randomBytes(random, length));
        values->addObjectsFromArray(NSArray::arrayWith({text, NSMutableString::stringWithString(text)}));
        values->addObjectsFromArray(
            NSArray::arrayWith({text->asData(), text->asData()->mutableCopy().autorelease()}));
    }
    return values;
}

/// An archive of those names, objects (class and values) and root.
NSData *archiveOf(std::initializer_list<std::string> names, std::initializer_list<std::string> objects,
                  const std::string &root) {
    const auto counted = [](const std::string &text) {
        return std::string(1, static_cast<char>(text.size())) + text;
    };
    std::string archive = "QBAR\1"s + static_cast<char>(names.size());
    for (const std::string &name : names)
        archive += counted(name);
    archive += static_cast<char>(objects.size());
    for (const std::string &object : objects)
        archive += object.substr(0, 1) + counted(object.substr(1));
    return dataOf(archive + counted(root));
}

} // namespace

TEST_F(NSArchiverTest, ValuesAndContainersComeBackEqualWithTheirClassesAndSharedObjects) {
    Random random;
    NSMutableArray *const all = valuesOfEachClass(random);
    for (int level = 0; level < 3; ++level) { // each holds those before it, also as keys
        NSMutableDictionary *const entries = NSMutableDictionary::dictionary();
        for (id value : *all)
            entries->setObjectForKey(value, value);
        const id containers[] = {NSArray::arrayWithArray(all),
                                 NSMutableArray::arrayWithArray(all),
                                 NSSet::setWithArray(all),
                                 NSMutableSet::setWithArray(all),
                                 NSDictionary::dictionaryWithDictionary(entries),
                                 entries};
        for (id container : containers)
            all->addObject(container);
    }
    for (id value : *all) {
        NSData *const inOrder = NSArchiver::archivedDataWithRootObject(value);
        NSData *const keyed = NSKeyedArchiver::archivedDataWithRootObject(value);
        const id read = NSUnarchiver::unarchiveObjectWithData(inOrder);
        ASSERT_TRUE(read && read->isEqual(value)) << *value;
        ASSERT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithData(keyed)->isEqual(value)) << *value;
        // The same bytes again: nothing that the archive holds was lost on the way.
        ASSERT_TRUE(NSArchiver::archivedDataWithRootObject(read)->isEqual(inOrder)) << *value;
    }
}

TEST_F(NSArchiverTest, BytesAreThoseOfTheFormat) {
    NSNumber *number = NSNumber::numberWithInt(-3);
    NSData *data = NSArchiver::archivedDataWithRootObject(NSArray::arrayWith({number, "ab"_ns, number}));
    EXPECT_EQ(bytesOf(data), "QBAR\1"
                             "\3\7NSArray\10NSNumber\10NSString"
                             "\3"
                             "\1\10\3\6\2\1\2\2\2\1"
                             "\2\4\3\2\3\5"
                             "\3\4\6\2ab"
                             "\2\2\0"s);
}

TEST_F(NSArchiverTest, EveryCutArchiveIsAnError) {
    const id value = NSDictionary::dictionaryWith(
        {{"key"_ns, NSArray::arrayWith({NSNumber::numberWithDouble(0.1), NSDate::distantPast()})}});
    for (NSData *data : {NSArchiver::archivedDataWithRootObject(value),
                         NSKeyedArchiver::archivedDataWithRootObject(value)}) {
        for (std::uint32_t length = 0; length < data->length(); ++length) {
            const ErrorExpectation error(900002);
            NSData *const cut = data->subdataWithRange({0, length});
            EXPECT_EQ(NSKeyedUnarchiver::unarchiveObjectWithData(cut), nullptr) << length;
        }
    }
}

TEST_F(NSArchiverTest, MalformedArchivesAreToldByOffsetAndReason) {
    const auto objectOf = [](const std::string &cls, const std::string &values) {
        return archiveOf({cls}, {values}, "\2\0"s); // the root's value: object 0
    };
    const auto unfit = [=](const std::string &cls, const std::string &values, const std::string &offset) {
        return std::pair(objectOf(cls, values),
                         offset + " an object of class '" + cls + "' can't have its values");
    };
    const std::pair<NSData *, std::string> rows[] = {
        {nullptr, "0 it is no archive"},
        {dataOf("QBAR\2"), "4 it is of another version"},
        {dataOf("QBAR\1\xff\xff\xff\xff\xff\xff\xff\xff\xff\2"),
         "5 a count is not in its shortest form, or larger than 64 bits"},
        {dataOf("QBAR\1\x80\0"s), "5 a count is not in its shortest form, or larger than 64 bits"},
        {dataOf("QBAR\1\1\xff\xff\xff\xff\x0fx"), "6 it has less bytes than a length says"},
        {archiveOf({"a", "a"}, {}, ""), "8 a name stands twice"},
        {objectOf("NSString", "\2\6\1a"), "16 an object has no class"},
        {dataOf(bytesOf(archiveOf({}, {}, "")) + "x"), "8 something stands behind its end"},
        {archiveOf({"NSString"}, {"\1\6\1a"}, "\2\1"), "22 an index is too large"},
        {archiveOf({"NSString"}, {"\1\6\1a"}, "\12"), "22 a value has an unknown type"},
        {archiveOf({"NSString"}, {"\1\6\1a"}, "\3\0"s), "22 a value has another type than its class reads"},
        {objectOf("NSString", "\1\6\1a\0"s),
         "21 an object of class 'NSString' has more values than it reads"},
        unfit("NSDate", "\1\5\0\0\0\0\0\0\xf8\x7f"s, "16"),
        unfit("NSArray", "\1\3\4\0"s, "17"),
        {objectOf("NSArray", "\1\3\xfe\xff\xff\xff\x1f\1"),
         "24 an object has less values than its class reads"},
        {objectOf("NSArray", "\1\3\xfe\xff\xff\xff\x7f\1"),
         "17 a value does not fit the type that its class reads"},
        {objectOf("NSArray", "\1\3\2\2\0"s), "19 a container holds itself"},
        {archiveOf({"NSDictionary", "NSMutableString"}, {"\1\3\2\2\1\2\1", "\2\6\1a"}, "\2\0"s), // a key
         "38 an object of class 'NSDictionary' can't have its values"},
        {archiveOf({"NSDictionary", "Leaf"}, {"\1\3\2\2\1\2\1", "\2"}, "\2\0"s), // another one
         "27 an object of class 'NSDictionary' can't have its values"},
        unfit("NSCalendarDate", "\1\5\0\0\0\0\0\0\0\0\0\0"s, "24"),
        unfit("NSNumber", "\1\3\60\3\2", "18"),
        unfit("NSValue", "\1\3\20\3\0\3\0"s, "17"),
        unfit("NSCharacterSet", "\1\3\0\3\0\3\4\3\0\3\2\3\2\3\2"s, "24"), // touching ranges
        unfit("NSCharacterSet", "\1\3\76\3\0\3\0"s, "24"),                // a class that is none
        {archiveOf({"k"}, {}, "\11\0\11\0\0"s), "12 a key has no value"},
        {archiveOf({"k"}, {}, "\11\0\0\11\0\0"s), "15 a key stands twice"},
    };
    NSArray *const classes = NSUnarchiver::valueClasses()->arrayByAddingObject(Leaf::cls());
    for (const auto &[archive, values] : rows) {
        ErrorExpectation error(900002);
        EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(archive, classes), nullptr) << values;
        EXPECT_EQ(error.values(), values);
        EXPECT_EQ(error.place().substr(0, 28), "src/Foundation/NSUnarchiver:");
    }
    NSData *const circle = // whose second half is read by way of an object that the first one holds, too
        archiveOf({"NSArray", "TreeNode", "children", "NSMutableArray", "root"},
                  {"\1\3\4\2\1\2\2", "\2\11\2\2\2", "\4\3\2\2\0"s}, "\11\4\2\0"s);
    EXPECT_ERROR(900002, "71 a container holds itself",
                 EXPECT_EQ(NSKeyedUnarchiver::unarchiveObjectWithData(circle, nodeClasses()), nullptr));
}

TEST_F(NSArchiverTest, DepthIsBoundedOnBothSidesNeedsLittleStackAndHasAnEnd) {
    EXPECT_TRUE(runOnSmallStack([] {
        NSData *deepest = NSArchiver::archivedDataWithRootObject(arraysInArrays(255).get());
        EXPECT_TRUE(NSUnarchiver::unarchiveObjectWithData(deepest)->isEqual(arraysInArrays(255).get()));
        EXPECT_ERROR(
            900005, "objects lie inside each other deeper than 256",
            EXPECT_EQ(NSKeyedArchiver::archivedDataWithRootObject(arraysInArrays(256).get()), nullptr));
        std::string objects;
        for (unsigned i = 1; i <= 300; ++i) // each array holds the next
            objects += i < 128 ? "\1\4\3\2\2"s + static_cast<char>(i)
                               : "\1\5\3\2\2"s + static_cast<char>(0x80 | i) + static_cast<char>(i >> 7);
        NSData *const deeper = dataOf("QBAR\1\1\7NSArray\xad\2" + objects + "\1\0\2\2\0"s);
        EXPECT_ERROR(900002, "1678 objects lie inside each other deeper than 256",
                     EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(deeper), nullptr));
    }));
    const Ref<NSMutableArray> array = NSMutableArray::init();
    array->addObject(NSDictionary::dictionaryWith({{"array"_ns, array.get()}}));
    EXPECT_ERROR(900005, "a container holds itself",
                 EXPECT_EQ(NSArchiver::archivedDataWithRootObject(array), nullptr));
    TreeNode *const node = TreeNode::node();
    array->setArray(NSArray::arrayWith({node, node->children.get()}));
    node->children->addObject(array);
    EXPECT_ERROR(900005, "a container holds itself",
                 EXPECT_EQ(NSKeyedArchiver::archivedDataWithRootObject(array), nullptr));
    array->removeObjectAtIndex(1);
    EXPECT_NE(NSKeyedArchiver::archivedDataWithRootObject(array), nullptr);
    array->removeAllObjects();
}

TEST_F(NSArchiverTest, ObjectsOfClientsMayReferToEachOther) {
    TreeNode *root = TreeNode::node(), *child = TreeNode::node();
    root->children->addObject(child);
    root->children->addObject(child);
    child->parent = root;
    NSData *data = NSKeyedArchiver::archivedDataWithRootObject(root);
    auto *read = static_cast<TreeNode *>(NSKeyedUnarchiver::unarchiveObjectWithData(data, nodeClasses()));
    ASSERT_NE(read, nullptr);
    auto *readChild = static_cast<TreeNode *>(read->children->objectAtIndex(0));
    EXPECT_EQ(readChild, read->children->objectAtIndex(1));
    EXPECT_EQ(readChild->parent, read);
    // The owner is not written for the child's sake.
    data = NSKeyedArchiver::archivedDataWithRootObject(child);
    read = static_cast<TreeNode *>(NSKeyedUnarchiver::unarchiveObjectWithData(data, nodeClasses()));
    EXPECT_EQ(read->parent, nullptr);
}

TEST_F(NSArchiverTest, OnlyClassesThatTheReaderNamesAreMade) {
    NSArray *const nodes = NSArray::arrayWithObject(TreeNode::node());
    NSData *const data = NSKeyedArchiver::archivedDataWithRootObject(nodes);
    const int before = TreeNode::made;
    EXPECT_ERROR(900002, "64 the class 'TreeNode' is not among those that are accepted",
                 EXPECT_EQ(NSKeyedUnarchiver::unarchiveObjectWithData(data), nullptr));
    EXPECT_EQ(TreeNode::made, before);
    NSKeyedUnarchiver *reader = NSKeyedUnarchiver::initForReadingWithData(data).autorelease();
    reader->setAllowedClasses(nodeClasses());
    EXPECT_TRUE(reader->allowedClasses()->containsObject(TreeNode::cls()) && reader->decodeRootObject());
    EXPECT_THROW(reader->setAllowedClasses(NSArray::arrayWithObject("NSString"_ns)),
                 InvalidArgumentException);
}

TEST_F(NSArchiverTest, ValuesOfEveryTypeComeBackInOrder) {
    const Ref<NSMutableData> data = NSMutableData::initWithBytes("x", 1);
    const Ref<NSArchiver> writer = NSArchiver::initForWritingWithMutableData(data);
    const signed char least = -128;
    const std::uint16_t row[] = {1, 65535, 3};
    const std::uint64_t largest = UINT64_MAX;
    const float tenth = 0.1f;
    const char *text = "text", *noText = nullptr;
    const SEL selector = "encodeObject:forKey:"_sel;
    Class *const cls = NSArchiver::cls();
    writer->encodeValuesOfObjCTypes("cQf**:#", &least, &largest, &tenth, &text, &noText, &selector, &cls);
    writer->encodeArrayOfObjCType("S", 3, row);
    writer->encodeBytes("a\0b", 3);
    writer->encodeDataObject(NSData::dataWithBytes("d", 1));
    EXPECT_THROW(writer->encodeValuesOfObjCTypes("ii", &tenth), InvalidArgumentException);
    EXPECT_THROW(writer->encodeValueOfObjCType("i", nullptr), InvalidArgumentException);
    writer->encodeObject(nullptr);
    writer->encodePropertyList(QBNil::value());
    EXPECT_EQ(writer->archiverData(), data.get());
    EXPECT_EQ(bytesOf(data).substr(0, 5), "xQBAR"); // behind what was there
    EXPECT_THROW(writer->encodeObject(nullptr), InvalidUseOfMethodException);

    const Ref<NSUnarchiver> reader = NSUnarchiver::initForReadingWithData(dataOf(bytesOf(data).substr(1)));
    std::int64_t readLeast = 0; // a wider one
    std::uint64_t readLargest = 0;
    double readTenth = 0;
    const char *readText = nullptr, *readNoText = text;
    SEL readSelector = nullptr;
    Class *readClass = nullptr;
    reader->decodeValuesOfObjCTypes("qQd**:#", &readLeast, &readLargest, &readTenth, &readText, &readNoText,
                                    &readSelector, &readClass);
    EXPECT_TRUE(readLeast == -128 && readLargest == UINT64_MAX && readTenth == static_cast<double>(0.1f));
    EXPECT_STREQ(readText, "text");
    EXPECT_TRUE(!readNoText && readSelector == selector && readClass == cls);
    std::uint16_t readRow[3] = {};
    reader->decodeArrayOfObjCType("S", 3, readRow);
    EXPECT_TRUE(std::equal(std::begin(row), std::end(row), readRow));
    std::uint32_t length = 0;
    const void *readBytes = reader->decodeBytesWithReturnedLength(&length);
    EXPECT_EQ(std::string_view(static_cast<const char *>(readBytes), length), "a\0b"s);
    EXPECT_EQ(bytesOf(reader->decodeDataObject()), "d");
    EXPECT_EQ(reader->decodeObject(), nullptr);
    EXPECT_FALSE(reader->isAtEnd());
    EXPECT_EQ(reader->decodePropertyList(), QBNil::value());
    EXPECT_TRUE(reader->isAtEnd());
    const Ref<NSUnarchiver> failing = NSUnarchiver::initForReadingWithData(archiveOf({}, {}, "\0\0"s));
    std::int32_t none = 1;
    failing->decodeValueOfObjCType("i", &none);
    EXPECT_TRUE(failing->isAtEnd()); // or who reads to the end would read for ever
    EXPECT_EQ(takenErrors(), "(900002)");
    EXPECT_THROW(reader->decodeValueOfObjCType("z", &readLeast), InvalidArgumentException);
    EXPECT_THROW(reader->decodeValueOfObjCType("i", nullptr), InvalidArgumentException);
}

TEST_F(NSArchiverTest, KeysFindValuesInAnyOrder) {
    const Ref<NSKeyedArchiver> writer = NSKeyedArchiver::init();
    writer->encodeInt(INT32_MIN, "int"_ns);
    writer->encodeInt64(INT64_MIN, "int64"_ns);
    writer->encodeDouble(0.1, "double"_ns);
    writer->encodeFloat(0.5f, "float"_ns);
    writer->encodeBool(YES, "bool"_ns);
    writer->encodeBytes("a\0c", 3, "bytes"_ns);
    writer->encodeObject("text"_ns, "object"_ns);
    writer->encodeObject(nullptr, "nil"_ns);
    writer->encodeInt(2, "two"_ns);
    EXPECT_THROW(writer->encodeValueOfObjCType("i", nullptr, "null"_ns), InvalidArgumentException);
    EXPECT_REASON(writer->encodeInt(1, "int"_ns),
                  "NSKeyedArchiver encodeValueOfObjCType:at:forKey: must have a "
                  "key that the object has not used yet.");

    const Ref<NSKeyedUnarchiver> reader = NSKeyedUnarchiver::initForReadingWithData(writer->archiverData());
    EXPECT_EQ(describe(reader->decodeObjectForKey("object"_ns)), "text");
    EXPECT_TRUE(reader->containsValueForKey("nil"_ns) && !reader->containsValueForKey("other"_ns));
    EXPECT_EQ(reader->decodeIntForKey("other"_ns), 0);
    EXPECT_THROW(reader->decodeValueOfObjCType("i", nullptr, "int"_ns), InvalidArgumentException);
    std::uint32_t length = 0;
    EXPECT_EQ(std::memcmp(reader->decodeBytesForKey("bytes"_ns, &length), "a\0c", 3), 0);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(reader->decodeBoolForKey("bool"_ns), YES);
    EXPECT_EQ(reader->decodeFloatForKey("float"_ns), 0.5f);
    EXPECT_EQ(reader->decodeDoubleForKey("double"_ns), 0.1);
    EXPECT_EQ(reader->decodeInt32ForKey("int"_ns), INT32_MIN);
    EXPECT_EQ(reader->decodeInt64ForKey("int64"_ns), INT64_MIN);
    expectError(900002, "8 it has no value for the key 'root'", [] {
        EXPECT_EQ(NSKeyedUnarchiver::unarchiveObjectWithData(archiveOf({}, {}, "")), nullptr);
    });
    const Ref<NSKeyedUnarchiver> other = NSKeyedUnarchiver::initForReadingWithData(writer->archiverData());
    const char *text = "";
    EXPECT_ERROR(900002, "123 a value has another type than its class reads",
                 other->decodeValueOfObjCType("*", &text, "bytes"_ns)); // has a NUL
    EXPECT_EQ(text, nullptr);
    const Ref<NSKeyedUnarchiver> third = NSKeyedUnarchiver::initForReadingWithData(writer->archiverData());
    bool truth = false;
    EXPECT_ERROR(900002, "137 a value does not fit the type that its class reads",
                 third->decodeValueOfObjCType("B", &truth, "two"_ns));
    ErrorExpectation error(900002);
    float single = 1;
    reader->decodeValueOfObjCType("f", &single, "double"_ns); // it has more digits
    EXPECT_EQ(single, 0);
    EXPECT_EQ(reader->decodeDoubleForKey("double"_ns), 0); // nothing is read after an error
    EXPECT_THROW(NSArchiver::init()->encodeInt(1, "key"_ns), InvalidUseOfMethodException);
}

TEST_F(NSArchiverTest, ExceptionsEndWritingAndReading) {
    const Ref<NSArchiver> writer = NSArchiver::init();
    EXPECT_REASON(writer->encodeObject(NSArray::arrayWithObject(NSArchiver::init().autorelease())),
                  "NSArchiver encodeWithCoder: is not for objects of this class.");
    EXPECT_ERROR(900005, "an object could not write itself", EXPECT_EQ(writer->archiverData(), nullptr));

    NSData *const archive = archiveOf({"NSCoder"}, {"\1"}, "\2\0\3\2"s); // an object and a number
    const Ref<NSUnarchiver> reader = NSUnarchiver::initForReadingWithData(archive);
    reader->setAllowedClasses(NSArray::arrayWithObject(NSCoder::cls()));
    EXPECT_THROW(reader->decodeObject(), InvalidUseOfMethodException);
    int number = 1;
    reader->decodeValueOfObjCType("i", &number);
    EXPECT_EQ(number, 0);
}

TEST_F(NSArchiverTest, ContainersAreReadAsTheyWereWhateverIsAddedMeanwhile) {
    NSMutableArray *const array = NSMutableArray::array();
    TreeNode *const node = TreeNode::node();
    array->addObject(node);
    node->children = array;
    NSData *const archive = NSKeyedArchiver::archivedDataWithRootObject(array);
    node->children = nullptr;
    TreeNode::onDecoding = [](NSCoder *coder) {
        static_cast<NSMutableArray *>(coder->decodeObjectForKey("children"_ns))->addObject("x"_ns);
    };
    auto *const read =
        qb::castOrNil<NSMutableArray>(NSKeyedUnarchiver::unarchiveObjectWithData(archive, nodeClasses()));
    TreeNode::onDecoding = [](NSCoder *) {};
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->count(), 1u);
    read->removeAllObjects(); // its element has it

    auto *const table =
        NSMutableDictionary::dictionaryWith({{"i"_ns, "1"_ns}, {"k"_ns, node}, {"l"_ns, "y"_ns}});
    node->children = NSMutableArray::initWith({table});
    NSData *const ofTable = NSKeyedArchiver::archivedDataWithRootObject(table);
    node->children = nullptr;
    TreeNode::onDecoding = [](NSCoder *coder) {
        const auto *tables = static_cast<NSMutableArray *>(coder->decodeObjectForKey("children"_ns));
        static_cast<NSMutableDictionary *>(tables->objectAtIndex(0))
            ->setDictionary(NSDictionary::dictionaryWith({{"m"_ns, "x"_ns}})); // as many keys as before
    };
    auto *const readTable = qb::castOrNil<NSMutableDictionary>(
        NSKeyedUnarchiver::unarchiveObjectWithData(ofTable, nodeClasses()));
    TreeNode::onDecoding = [](NSCoder *) {};
    ASSERT_NE(readTable, nullptr);
    EXPECT_EQ(describe(readTable->allKeys()), "(i, k, l)");
    readTable->removeAllObjects();

    const auto expectSame = [](auto object, auto change) {
        const Ref<NSObject> filled = Ref<NSObject>::adopt(object);
        change(object);
        NSArray *const classes = nodeClasses()->arrayByAddingObject(filled->classObject());
        NSData *const bytes = NSKeyedArchiver::archivedDataWithRootObject(filled);
        const id same = NSKeyedUnarchiver::unarchiveObjectWithData(bytes, classes);
        EXPECT_TRUE(filled->isEqual(same)) << describe(filled->classObject()->name());
        return describe(same);
    };
    expectSame(new FilledArray, [](auto *it) { it->addObject("y"_ns); });
    expectSame(new FilledSet, [](auto *it) { it->removeObject("x"_ns); });
    expectSame(new FilledData, [](auto *) {});
    expectSame(new FilledCharacters, [](auto *it) { it->addCharactersInString("a"_ns); });
    const auto reorder = [](auto *it) {
        it->setDictionary(NSDictionary::dictionaryWith({{"y"_ns, "1"_ns}, {"x"_ns, "2"_ns}}));
    };
    EXPECT_EQ(expectSame(new FilledDictionary, reorder), "{y = 1; x = 2; }");
    // Makers that take all that there is to be.
    const id given = send<id>(FilledData::cls(), "dataWithBytesNoCopy:length:"_sel,
                              static_cast<void *>(::strdup("z")), 1u);
    EXPECT_EQ(describe(given), "<7a>");
    const id letters = send<id>(FilledCharacters::cls(), "characterSetWithRange:"_sel, NSRange{'a', 2});
    EXPECT_TRUE(letters->isEqual(NSCharacterSet::characterSetWithCharactersInString("ab"_ns)));
}

TEST_F(NSArchiverTest, ObjectsBeingEncodedCannotFinishTheArchive) {
    const Ref<NSKeyedArchiver> writer = NSKeyedArchiver::init();
    const char *const reason =
        "NSArchiver finishEncoding must not be sent by an object that is being encoded.";
    TreeNode *const node = TreeNode::node();
    node->onEncoding = [&] {
        EXPECT_REASON(writer->archiverData(), reason);
        writer->encodeRootObject("a"_ns);
    };
    EXPECT_REASON(Ref<NSArchiver>::adopt(new NSArchiver)->encodeRootObject("a"_ns),
                  "NSArchiver must be made by init or initForWritingWithMutableData:.");
    EXPECT_REASON(writer->encodeRootObject(NSArray::arrayWithObject(node)), reason);
    EXPECT_ERROR(900005, "an object could not write itself", EXPECT_EQ(writer->archiverData(), nullptr));
}

TEST_F(NSArchiverTest, FilesKeepTheirOldArchiveWhenANewOneCannotBeMade) {
    const id value = NSArray::arrayWith({"a"_ns, NSNumber::numberWithFloat(HUGE_VALF)});
    EXPECT_TRUE(NSKeyedArchiver::archiveRootObject(value, path("archive")));
    EXPECT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithFile(path("archive"))->isEqual(value));
    EXPECT_ERROR(900005, "objects lie inside each other deeper than 256",
                 EXPECT_FALSE(NSArchiver::archiveRootObject(arraysInArrays(300).get(), path("archive"))));
    EXPECT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithFile(path("archive"))->isEqual(value));
}
