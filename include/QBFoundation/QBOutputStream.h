// Where bytes and values are written to.
#ifndef QBFOUNDATION_QBOUTPUTSTREAM_H
#define QBFOUNDATION_QBOUTPUTSTREAM_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Value.h>

#include <cstdint>

class NSArray;
class NSDictionary;
class NSEnumerator;

/// A sink for bytes, text and whole values.
///
/// A concrete stream has one primitive, `_writeBuffer`, which every other operation ends in; callers use
/// `writeBuffer`. A subclass may also override `writeByte`, `flush`, `close`, `reset` and `writeObject`, and
/// the operations for single types, which is how it changes their rendering. Single bytes (`putByte`,
/// `writeNL`, `writeSpace`, `writeTab`) end in `writeByte`, which `QBFileOutputStream`, `QBMD5OutputStream`
/// and `QBValidCharFilter` answer without `_writeBuffer`; a subclass of these that is to see all overrides
/// both.
///
/// Lists and dictionaries are written up to `kDeepestNesting` levels deep, because each level takes some
/// stack. One that is deeper raises 900003 (depth) and is left out, and so is what was still to come of the
/// whole value.
class QB_EXPORT QBOutputStream : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Lifecycle ---

    /// Flushes; a stream that owns a resource gives it up.
    virtual void close() { flush(); }
    virtual void flush() {}
    /// Starts anew, where the stream can.
    virtual void reset() {}

    // --- Bytes ---

    /// Writes `length` bytes, which stay as they are until it returns; none when it is 0.
    /// Throws InvalidArgumentException when `buffer` is null, also for a length of 0.
    virtual void writeBuffer(const void *buffer, std::uint32_t length);
    virtual void writeByte(char byte) { _writeBuffer(&byte, 1); }
    /// `writeByte` for loops over single bytes: where the stream has room at hand, there is no virtual call.
    void putByte(char byte) {
        if (next_ < directEnd_) [[likely]]
            *next_++ = byte;
        else
            writeByte(byte);
    }
    /// Writes the line end of Unix, 10.
    virtual void writeNL() { putByte('\n'); }
    /// Writes the line end of network protocols, 13 and 10, at once.
    virtual void writeCRNL() { _writeBuffer("\r\n", 2); }
    virtual void writeSpace() { putByte(' '); }
    virtual void writeTab() { putByte('\t'); }

    // --- Values ---

    /// Writes a value, which nobody changes meanwhile, as its type and this stream settle; nil writes
    /// nothing.
    virtual void writeObject(id object);
    /// Writes `format`, filled as by `NSString` `stringWithFormat:`.
    template <class... V>
    void writeFormat(NSString *format, const V &...values) {
        qb::withArgList([&](const qb::ArgList &list) { writeFormatWithArgList(format, list); }, values...);
    }
    virtual void writeFormatWithArgList(NSString *format, const qb::ArgList &argList);

    // --- For subclasses ---

    /// The primitive: appends `length` bytes, at least one.
    virtual void _writeBuffer(const void *buffer, std::uint32_t length) = 0;
    /// Writes the object's `stringValue`.
    virtual void _writeNSObject(id object);
    /// Writes each object that the enumerator yields, nothing between them.
    virtual void _writeEnumerator(NSEnumerator *enumerator);
    virtual void _writeArray(NSArray *array);
    /// Writes the value of an entry; the key is left out.
    virtual void _writeObjectForKey(id object, id key);
    /// Writes each entry, in the dictionary's order.
    virtual void _writeDictionary(NSDictionary *dictionary);
    /// Writes the string's bytes.
    virtual void _writeString(NSString *string);

    // --- For filters ---

    /// Returns room for up to `count` writes of `unit` bytes each, which the caller fills from its beginning
    /// and ends with `endJoinedWrite`, before anything else happens to the stream: the writes of a filter
    /// need no copy then. `count` becomes how many there is room for.
    ///
    /// Null when there is no room without growing, or when one write shall be told from two: the next one is
    /// to be a `_writeBuffer` then.
    char *beginJoinedWrite(std::uint32_t unit, std::uint32_t &count) {
        if (std::int64_t{unit} * count < directEnd_ - next_) [[likely]]
            return next_;
        std::uint32_t found = count; // so that `count` itself may stay in a register
        char *const room = findJoinedRoom(unit, found);
        count = found;
        return room;
    }
    /// Counts the bytes up to `end`, perhaps none, as written.
    void endJoinedWrite(char *end) { next_ = end; }

    static constexpr std::uint32_t kDeepestNesting = 512;

protected:
    /// One more list or dictionary being written, in the scope of this object. The operations for lists and
    /// dictionaries open one and write nothing when `isCut`.
    class Nesting {
    public:
        explicit Nesting(QBOutputStream *stream) : stream_(stream) {
            if (stream->openContainers_ >= kDeepestNesting && !stream->isCut_)
                stream->cut();
            ++stream->openContainers_; // behind the raising, which may throw
        }
        ~Nesting() {
            if (--stream_->openContainers_ == 0)
                stream_->isCut_ = false;
        }
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;

        /// Whether nothing more may be written, because this container, or one that was inside it, is too
        /// deep.
        bool isCut() const { return stream_->isCut_; }

    private:
        QBOutputStream *const stream_;
    };

    /// What `beginJoinedWrite` returns for a stream that has a buffer; null here.
    virtual char *findJoinedRoom(std::uint32_t unit, std::uint32_t &count);

    // A stream with a buffer puts the next byte at `next_`, and, below `directEnd_`, without a call of
    // `_writeBuffer`.
    char *next_ = nullptr;
    mutable char *directEnd_ = nullptr;

    /// Writes each entry in the dictionary's order, until the nesting is cut.
    void writeEntries(NSDictionary *dictionary, const Nesting &nesting);

private:
    void cut();

    std::uint32_t openContainers_ = 0;
    bool isCut_ = false; // the rest of the outermost value is left out
};

#endif
