// Writing values as property-list text.
#ifndef QBFOUNDATION_QBPROPERTYLISTOUTPUTSTREAM_H
#define QBFOUNDATION_QBPROPERTYLISTOUTPUTSTREAM_H

#include <QBFoundation/QBDataOutputStream.h>

#include <cstdint>

/// A memory sink that gives the values written to it the structure of property-list text.
///
/// Lists stand in parentheses, dictionaries in braces with one "key = value;" a line, each level indented by
/// two blanks more. Strings, and what has only a `stringValue`, are written as their `stringRepresentation`,
/// data as its `description`. Nil-like values are left out. `targetData` is the text; `propertyList` reads it
/// back. Keys are written like values: with keys that are data or containers, or two of the same text, it
/// can't be read back.
///
/// A list or dictionary inside `kDeepestNesting` others or more is written as "...", raises 900003 (depth)
/// and ends the value: what is open is closed, and nothing more of it is written.
class QB_EXPORT QBPropertyListOutputStream : public QBDataOutputStream {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBPropertyListOutputStream *stream() { return init().autorelease(); }
    static QBPropertyListOutputStream *streamWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<QBPropertyListOutputStream> init() {
        return qb::init<QBPropertyListOutputStream>(&QBPropertyListOutputStream::setUp);
    }
    static Ref<QBPropertyListOutputStream> initWithCapacity(std::uint32_t capacity) {
        return qb::init<QBPropertyListOutputStream>(&QBPropertyListOutputStream::setUpWithCapacity, capacity);
    }

    /// The indentation of the next line, in blanks.
    std::int32_t indent() const { return indent_; }

    /// Sends `writeOnPropertyListOutputStream:` to the object; nil writes nothing.
    void writeObject(id object) override;

    // --- For subclasses ---

    /// Writes the string's `stringRepresentation`.
    void _writeString(NSString *string) override;
    void _writeDictionary(NSDictionary *dictionary) override;
    /// Writes "key = value;" on a line of its own; nothing when one of them is nil-like.
    void _writeObjectForKey(id object, id key) override;
    /// Writes a list of the objects that are not nil-like.
    void _writeEnumerator(NSEnumerator *enumerator) override;
    /// Writes as many blanks as `indent` says, but never more than 78.
    virtual void _writeIndent();

protected:
    BOOL setUpWithCapacity(std::uint32_t capacity) override;

private:
    template <qb::FixedString Text>
    struct FixedPiece;
    struct IndentPiece;
    struct StringPiece;

    template <class... Piece>
    void writePieces(const Piece &...pieces);
    template <qb::FixedString Opening, qb::FixedString Closing, class Body>
    void writeContainer(Body writeBody);
    template <class Next>
    void writeList(Next nextObject);
    bool writeElement(id object, bool isFirst);
    bool writeDirectly(id object);
    void writeArrayDirectly(NSArray *array);
    void writeDictionaryDirectly(NSDictionary *dictionary);
    void writeEntryDirectly(id object, NSString *key);

    std::int32_t indent_ = 0;
    // Whether this is no subclass, which may want to see each operation: then the library's own strings,
    // arrays and dictionaries are written without going through the operations.
    bool isDirect_ = false;
};

#endif
