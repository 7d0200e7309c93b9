#include <QBFoundation/QBPropertyListOutputStream.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/PlainClasses.h"
#include "Text/PlistText.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <typeinfo>
#include <utility>

namespace {

constexpr std::int32_t kIndentStep = 2;
constexpr std::int32_t kWidestIndent = 78;
constexpr std::string_view kBlanks =
    "                                                                                ";

// Indents what is written in its scope.
class Indented {
public:
    explicit Indented(std::int32_t &indent) : indent_(indent) { indent_ += kIndentStep; }
    ~Indented() { indent_ -= kIndentStep; }
    Indented(const Indented &) = delete;
    Indented &operator=(const Indented &) = delete;

private:
    std::int32_t &indent_;
};

} // namespace

Class *QBPropertyListOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::method<"_writeIndent">(&QBPropertyListOutputStream::_writeIndent),
        qb::method<"indent">(&QBPropertyListOutputStream::indent),
    };
    static Class *const self = new Class("QBPropertyListOutputStream", QBDataOutputStream::cls(), methods,
                                         qb::construct<QBPropertyListOutputStream>);
    return self;
}

// What a line is made of. Each piece tells how much room it may take and is put there, or it is written on
// its own, which is the same to the buffer.
template <qb::FixedString Text>
struct QBPropertyListOutputStream::FixedPiece {
    static constexpr std::uint64_t room() { return Text.length(); }
    static char *put(char *target) {
        std::memcpy(target, Text.text, Text.length());
        return target + Text.length();
    }
    static void write(QBPropertyListOutputStream *stream) {
        if (stream->isDirect_)
            stream->QBDataOutputStream::writeBuffer(Text.text, Text.length());
        else
            stream->QBDataOutputStream::_writeString(operator""_ns<Text>());
    }
};

struct QBPropertyListOutputStream::IndentPiece {
    static constexpr std::uint64_t room() { return kBlanks.size(); }
    char *put(char *target) const {
        constexpr std::int32_t kStep = 16; // more than wanted is cheaper than the very number
        static_assert(kBlanks.size() % kStep == 0 && kBlanks.size() >= kWidestIndent);
        const std::int32_t wanted = std::min(width, kWidestIndent);
        for (std::int32_t done = 0; done < wanted; done += kStep)
            std::memcpy(target + done, kBlanks.data(), kStep);
        return target + wanted;
    }
    static void write(QBPropertyListOutputStream *stream) { stream->_writeIndent(); }

    std::int32_t width;
};

struct QBPropertyListOutputStream::StringPiece {
    std::uint64_t room() const { return qb::text::plistTextRoom(string->cStringLength()); }
    char *put(char *target) const {
        const std::string_view bytes = string->view();
        return qb::text::writePlistText(bytes.data(), bytes.size(), target);
    }
    void write(QBPropertyListOutputStream *stream) const { stream->_writeString(string); }

    NSString *string;
};

template <class... Piece>
void QBPropertyListOutputStream::writePieces(const Piece &...pieces) {
    if (char *target = beginDirectWrite((pieces.room() + ...))) {
        ((target = pieces.put(target)), ...);
        endDirectWrite(target);
    } else {
        (pieces.write(this), ...);
    }
}

BOOL QBPropertyListOutputStream::setUpWithCapacity(std::uint32_t capacity) {
    if (!QBDataOutputStream::setUpWithCapacity(capacity))
        return NO;
    allowDirectWrites<QBPropertyListOutputStream>();
    isDirect_ = typeid(*this) == typeid(QBPropertyListOutputStream);
    return YES;
}

void QBPropertyListOutputStream::writeObject(id object) {
    if (object && !(isDirect_ && writeDirectly(object)))
        object->writeOnPropertyListOutputStream(this);
}

void QBPropertyListOutputStream::_writeString(NSString *string) {
    const NSAutoreleasePool pool;
    QBDataOutputStream::_writeString(string ? string->stringRepresentation() : nullptr);
}

void QBPropertyListOutputStream::_writeDictionary(NSDictionary *dictionary) {
    writeContainer<"{\n", "}">([&](const Nesting &nesting) { writeEntries(dictionary, nesting); });
}

void QBPropertyListOutputStream::_writeObjectForKey(id object, id key) {
    const Ref<NSObject> keptObject(object), keptKey(key); // whatever they do when they are asked and written
    if (IsNil(object) || IsNil(key))
        return;
    _writeIndent();
    writeObject(key);
    writePieces(FixedPiece<" = ">());
    writeObject(object);
    writePieces(FixedPiece<";\n">());
}

void QBPropertyListOutputStream::_writeEnumerator(NSEnumerator *enumerator) {
    const Ref<NSEnumerator> kept(enumerator);
    std::optional<NSAutoreleasePool> pool; // for one object at a time
    writeList([&] {
        pool.reset();
        pool.emplace();
        return enumerator ? enumerator->nextObject() : nullptr;
    });
}

void QBPropertyListOutputStream::_writeIndent() {
    const auto width = static_cast<std::uint32_t>(std::min(indent_, kWidestIndent));
    writeBuffer(kBlanks.data(), width);
}

// --- Containers ---

template <qb::FixedString Opening, qb::FixedString Closing, class Body>
void QBPropertyListOutputStream::writeContainer(Body writeBody) {
    const Nesting nesting(this);
    if (nesting.isCut())
        return writePieces(FixedPiece<"...">());
    writePieces(FixedPiece<Opening>());
    {
        const Indented indented(indent_);
        writeBody(nesting);
    }
    writePieces(IndentPiece{indent_}, FixedPiece<Closing>());
}

// Writes what `nextObject` returns until it is nil.
template <class Next>
void QBPropertyListOutputStream::writeList(Next nextObject) {
    writeContainer<"(\n", ")">([&](const Nesting &nesting) {
        bool isFirst = true;
        while (!nesting.isCut()) {
            const id object = nextObject();
            if (!object)
                break;
            if (writeElement(object, isFirst))
                isFirst = false;
        }
        if (!isFirst)
            writePieces(FixedPiece<"\n">());
    });
}

// Returns whether the object was written, which nil-like ones are not.
bool QBPropertyListOutputStream::writeElement(id object, bool isFirst) {
    const IndentPiece indent{indent_};
    if (isDirect_ && qb::isPlainString(object)) {
        const StringPiece string{static_cast<NSString *>(object)};
        if (isFirst)
            writePieces(indent, string);
        else
            writePieces(FixedPiece<",\n">(), indent, string);
        return true;
    }
    const Ref<NSObject> kept(object); // whatever it does when it is asked
    if (IsNil(object))
        return false;
    if (!isFirst)
        writePieces(FixedPiece<",\n">());
    writePieces(indent);
    writeObject(object);
    return true;
}

// --- Direct writing ---

// Writes an object of the library's own classes; returns false for any other.
bool QBPropertyListOutputStream::writeDirectly(id object) {
    switch (qb::plainKindOf(object)) {
    case qb::PlainKind::string:
        writePieces(StringPiece{static_cast<NSString *>(object)});
        return true;
    case qb::PlainKind::array:
        writeArrayDirectly(static_cast<NSArray *>(object));
        return true;
    case qb::PlainKind::dictionary:
        writeDictionaryDirectly(static_cast<NSDictionary *>(object));
        return true;
    default:
        return false;
    }
}

void QBPropertyListOutputStream::writeArrayDirectly(NSArray *array) {
    NSArray::Iterator next = array->begin(); // keeps the array, and ends as its enumerator would
    for (id element : array->view())
        __builtin_prefetch(element);
    bool hasBegun = false;
    writeList([&]() -> id {
        if (std::exchange(hasBegun, true) && !next.atEnd())
            ++next;
        return next.atEnd() ? nullptr : *next;
    });
}

void QBPropertyListOutputStream::writeDictionaryDirectly(NSDictionary *dictionary) {
    const Ref<NSDictionary> kept(dictionary); // before the sink gets its first bytes
    for (const auto &entry : dictionary->table())
        __builtin_prefetch(entry.value);
    writeContainer<"{\n", "}">([&](const Nesting &nesting) {
        for (NSDictionary::Iterator next = dictionary->begin(); !next.atEnd() && !nesting.isCut(); ++next) {
            const auto [key, value] = *next;
            if (qb::isPlainString(key) && qb::plainKindOf(value) != qb::PlainKind::other)
                writeEntryDirectly(value, static_cast<NSString *>(key));
            else
                QBPropertyListOutputStream::_writeObjectForKey(value, key);
        }
    });
}

// Writes an entry of the library's own classes, none of which is nil-like.
void QBPropertyListOutputStream::writeEntryDirectly(id object, NSString *key) {
    const IndentPiece indent{indent_};
    if (qb::isPlainString(object))
        return writePieces(indent, StringPiece{key}, FixedPiece<" = ">(),
                           StringPiece{static_cast<NSString *>(object)}, FixedPiece<";\n">());
    writePieces(indent, StringPiece{key}, FixedPiece<" = ">());
    writeDirectly(object);
    writePieces(FixedPiece<";\n">());
}
