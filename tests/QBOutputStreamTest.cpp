#include "support/PoolFixture.h"

using QBOutputStreamTest = PoolFixture;

namespace {

// A client's stream that has the primitive alone.
struct Recorder : QBOutputStream {
    void _writeBuffer(const void *buffer, std::uint32_t length) override {
        writes.emplace_back(static_cast<const char *>(buffer), length);
    }
    void flush() override { ++flushes; }

    Strings writes;
    int flushes = 0;
};

std::string written(id object) {
    QBDataOutputStream *const stream = QBDataOutputStream::stream();
    stream->writeObject(object);
    return bytesOf(stream->targetData());
}

} // namespace

TEST_F(QBOutputStreamTest, EveryOperationEndsInThePrimitive) {
    Ref<Recorder> stream = Ref<Recorder>::adopt(new Recorder);
    stream->writeBuffer("ab", 2);
    stream->writeByte('\xFF');
    stream->writeNL();
    stream->writeCRNL();
    stream->writeSpace();
    stream->writeTab();
    stream->writeFormat("%d-%@"_ns, 7, "x"_ns);
    stream->writeBuffer("", 0); // which never arrives
    EXPECT_REASON(stream->writeBuffer(nullptr, 0),
                  "QBOutputStream writeBuffer:length: must have a buffer that is not NULL.");
    const Strings expected = {"ab", "\xFF", "\n", "\r\n", " ", "\t", "7-x"};
    EXPECT_EQ(stream->writes, expected);
    stream->close();
    EXPECT_EQ(stream->flushes, 1);
}

TEST_F(QBOutputStreamTest, ValuesAreWrittenByTheirTypes) {
    NSDictionary *dictionary = NSDictionary::dictionaryWithObjectForKey("value"_ns, "key"_ns);
    NSArray *array = NSArray::arrayWithObjects("x"_ns, number(5), dictionary);
    EXPECT_EQ(written(NSString::stringWith(std::string("a\0b", 3))), std::string("a\0b", 3));
    EXPECT_EQ(written(NSData::dataWithBytes("\x01\xFF", 2)), "\x01\xFF");
    EXPECT_EQ(written(number(-12)), "-12");
    EXPECT_EQ(written(array), "x5value");
    EXPECT_EQ(written(array->objectEnumerator()), "x5value");
    EXPECT_EQ(written(QBNil::value()), "");
}

TEST_F(QBOutputStreamTest, TheTextsOfALongContainerLeaveNothingInThePool) {
    NSArray *const array = NSArray::arrayWithObjects(number(5), dataOf("x"));
    NSDictionary *const dictionary = NSDictionary::dictionaryWithObjectForKey(array, number(1));
    for (QBOutputStream *stream : {static_cast<QBOutputStream *>(QBDataOutputStream::stream()),
                                   static_cast<QBOutputStream *>(QBPropertyListOutputStream::stream()),
                                   static_cast<QBOutputStream *>(QBArrayOutputStream::stream())}) {
        const std::uint32_t before = pool_.objectCount();
        stream->_writeArray(array);
        stream->_writeDictionary(dictionary);
        EXPECT_EQ(pool_.objectCount(), before);
    }
}

TEST_F(QBOutputStreamTest, SubclassChangesTheRenderingOfAType) {
    struct Quoter : Recorder {
        void _writeString(NSString *string) override {
            writeByte('"');
            Recorder::_writeString(string);
            writeByte('"');
        }
        void _writeObjectForKey(id object, id key) override {
            writeObject(key);
            writeByte('=');
            writeObject(object);
        }
    };
    Ref<Quoter> stream = Ref<Quoter>::adopt(new Quoter);
    stream->writeObject(NSDictionary::dictionaryWithObjectForKey(number(1), "k"_ns));
    EXPECT_EQ(stream->writes, (Strings{"\"", "k", "\"", "=", "\"", "1", "\""}));
}

TEST_F(QBOutputStreamTest, ArraySinkKeepsEachWriteAndEachObject) {
    QBArrayOutputStream *stream = QBArrayOutputStream::stream();
    NSDictionary *dictionary = NSDictionary::dictionaryWithObjectForKey("value"_ns, "key"_ns);
    stream->writeBuffer("ab", 2);
    stream->writeByte('c');
    stream->writeObject(dictionary);
    EXPECT_EQ(describe(stream->targetArray()), "(<6162>, <63>, {key = value; })");
    EXPECT_EQ(stream->targetArray()->objectAtIndex(2), dictionary);
    EXPECT_THROW(stream->writeObject(nullptr), InvalidArgumentException);
    stream->reset();
    EXPECT_EQ(stream->targetArray()->count(), 0u);
}
