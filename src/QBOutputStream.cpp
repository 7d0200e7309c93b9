#include <QBFoundation/QBOutputStream.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

namespace {
constexpr const char *kFile = "src/QBOutputStream";
} // namespace

Class *QBOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"stream">(&QBOutputStream::setUp),
        qb::method<"close">(&QBOutputStream::close),
        qb::method<"flush">(&QBOutputStream::flush),
        qb::method<"reset">(&QBOutputStream::reset),
        qb::method<"writeBuffer:length:">(&QBOutputStream::writeBuffer),
        qb::method<"_writeBuffer:length:">(&QBOutputStream::_writeBuffer),
        qb::method<"writeByte:">(&QBOutputStream::writeByte),
        qb::method<"writeObject:">(&QBOutputStream::writeObject),
        qb::method<"_writeNSObject:">(&QBOutputStream::_writeNSObject),
        qb::method<"_writeEnumerator:">(&QBOutputStream::_writeEnumerator),
        qb::method<"_writeArray:">(&QBOutputStream::_writeArray),
        qb::method<"_writeObject:forKey:">(&QBOutputStream::_writeObjectForKey),
        qb::method<"_writeDictionary:">(&QBOutputStream::_writeDictionary),
        qb::method<"_writeString:">(&QBOutputStream::_writeString),
        qb::method<"writeNL">(&QBOutputStream::writeNL),
        qb::method<"writeCRNL">(&QBOutputStream::writeCRNL),
        qb::method<"writeSpace">(&QBOutputStream::writeSpace),
        qb::method<"writeTab">(&QBOutputStream::writeTab),
        qb::method<"writeFormat:">(&QBOutputStream::writeFormatWithArgList),
    };
    static Class *const self = new Class("QBOutputStream", NSObject::cls(), methods);
    return self;
}

void QBOutputStream::writeBuffer(const void *buffer, std::uint32_t length) {
    if (!buffer)
        throw InvalidArgumentException(
            "QBOutputStream writeBuffer:length: must have a buffer that is not NULL.");
    if (length != 0)
        _writeBuffer(buffer, length);
}

void QBOutputStream::writeObject(id object) {
    const Ref<NSObject> kept(object); // whatever the sinks behind this stream let go of
    if (object)
        object->writeOnOutputStream(this);
}

void QBOutputStream::writeFormatWithArgList(NSString *format, const qb::ArgList &argList) {
    writeObject(NSString::initWithFormatArguments(format, argList).get());
}

void QBOutputStream::_writeNSObject(id object) {
    const NSAutoreleasePool pool; // a long container makes many texts
    if (object)
        writeObject(object->stringValue());
}

void QBOutputStream::_writeEnumerator(NSEnumerator *enumerator) {
    const Ref<NSEnumerator> kept(enumerator); // whatever its objects do while they are written
    const Nesting nesting(this);
    while (enumerator && !nesting.isCut()) {
        const NSAutoreleasePool pool;
        const id object = enumerator->nextObject();
        if (!object)
            return;
        writeObject(object);
    }
}

void QBOutputStream::_writeArray(NSArray *array) {
    const NSAutoreleasePool pool;
    if (array)
        writeObject(array->objectEnumerator());
}

void QBOutputStream::_writeObjectForKey(id object, id) {
    writeObject(object);
}

void QBOutputStream::_writeDictionary(NSDictionary *dictionary) {
    writeEntries(dictionary, Nesting(this));
}

void QBOutputStream::writeEntries(NSDictionary *dictionary, const Nesting &nesting) {
    const NSAutoreleasePool pool;
    const Ref<NSEnumerator> keys = dictionary ? dictionary->keyEnumerator() : nullptr;
    while (keys && !nesting.isCut()) {
        const NSAutoreleasePool step;
        const id key = keys->nextObject();
        if (!key)
            return;
        _writeObjectForKey(dictionary->objectForKey(key), key);
    }
}

void QBOutputStream::_writeString(NSString *string) {
    if (string)
        writeBuffer(string->cString(), string->cStringLength());
}

// --- For filters ---

char *QBOutputStream::findJoinedRoom(std::uint32_t, std::uint32_t &) {
    return nullptr;
}

// --- Depth ---

// Leaves out the rest of the whole value.
void QBOutputStream::cut() {
    isCut_ = true;
    qb::raiseError(kFile, __LINE__, qb::kErrorTooDeep, kDeepestNesting);
}
