#include <QBFoundation/QBPropertyListOutputStream.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Text/PlistText.h"

#include <algorithm>
#include <typeinfo>

namespace {

constexpr std::int32_t kIndentStep = 2;
constexpr std::string_view kBlanks =
    "                                                                              ";
static_assert(kBlanks.size() == 78);

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

// Compared by address: a type that is told apart by mistake is only written more slowly.
template <class... T>
bool isOneOf(const std::type_info &type) {
    return ((&type == &typeid(T)) || ...);
}

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
    QBDataOutputStream::_writeString(string ? string->stringRepresentation() : nullptr);
}

void QBPropertyListOutputStream::_writeDictionary(NSDictionary *dictionary) {
    writeContainer<"{\n", "}">([&](const Nesting &nesting) { writeEntries(dictionary, nesting); });
}

void QBPropertyListOutputStream::_writeObjectForKey(id object, id key) {
    if (IsNil(object) || IsNil(key))
        return;
    const Ref<NSObject> kept(object); // whatever the key does while it is written
    _writeIndent();
    writeObject(key);
    writeText<" = ">();
    writeObject(object);
    writeText<";\n">();
}

void QBPropertyListOutputStream::_writeEnumerator(NSEnumerator *enumerator) {
    writeList([enumerator] { return enumerator ? enumerator->nextObject() : nullptr; });
}

void QBPropertyListOutputStream::_writeIndent() {
    const auto width =
        std::min(static_cast<std::uint32_t>(indent_), static_cast<std::uint32_t>(kBlanks.size()));
    writeBuffer(kBlanks.data(), width);
}

// --- What the operations share ---

template <qb::FixedString Text>
void QBPropertyListOutputStream::writeText() {
    if (isDirect_)
        QBDataOutputStream::writeBuffer(Text.view().data(), Text.view().size());
    else
        QBDataOutputStream::_writeString(operator""_ns<Text>());
}

template <qb::FixedString Opening, qb::FixedString Closing, class Body>
void QBPropertyListOutputStream::writeContainer(Body writeBody) {
    const Nesting nesting(this);
    if (nesting.isCut())
        return writeText<"...">();
    writeText<Opening>();
    {
        const Indented indented(indent_);
        writeBody(nesting);
    }
    _writeIndent();
    writeText<Closing>();
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
            if (IsNil(object))
                continue;
            if (!isFirst)
                writeText<",\n">();
            isFirst = false;
            _writeIndent();
            writeObject(object);
        }
        writeText<"\n">();
    });
}

// --- Direct writing ---

// Writes an object of the library's own classes; returns false for any other.
bool QBPropertyListOutputStream::writeDirectly(id object) {
    const std::type_info &type = typeid(*object);
    if (isOneOf<NSString, NSMutableString>(type))
        writeStringDirectly(static_cast<NSString *>(object));
    else if (isOneOf<NSDictionary, NSMutableDictionary>(type))
        writeDictionaryDirectly(static_cast<NSDictionary *>(object));
    else if (isOneOf<NSArray, NSMutableArray>(type))
        writeArrayDirectly(static_cast<NSArray *>(object));
    else
        return false;
    return true;
}

void QBPropertyListOutputStream::writeStringDirectly(NSString *string) {
    const std::string_view bytes = string->view();
    if (char *const target = beginDirectWrite(qb::text::plistTextRoom(bytes.size())))
        endDirectWrite(qb::text::writePlistText(bytes.data(), bytes.size(), target));
    else
        QBDataOutputStream::_writeString(string->stringRepresentation());
}

void QBPropertyListOutputStream::writeArrayDirectly(NSArray *array) {
    const Ref<NSArray> kept(array); // as its enumerator would
    NSArray::Iterator next = array->begin();
    bool hasBegun = false;
    writeList([&]() -> id {
        if (std::exchange(hasBegun, true))
            ++next;
        return next.atEnd() ? nullptr : *next;
    });
}

void QBPropertyListOutputStream::writeDictionaryDirectly(NSDictionary *dictionary) {
    const Ref<NSDictionary> kept(dictionary);
    writeContainer<"{\n", "}">([&](const Nesting &nesting) {
        for (NSDictionary::Iterator next = dictionary->begin(); !next.atEnd() && !nesting.isCut(); ++next) {
            const auto [key, value] = *next;
            QBPropertyListOutputStream::_writeObjectForKey(value, key);
        }
    });
}
