// How each type of value chooses the way in which it is written: it calls back the stream's operation for its
// type.
#include <QBFoundation/QBOutputStream.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSObject.Tables.h"

std::span<const qb::Method> qb::tables::objectOutputStreaming() {
    static const qb::Method methods[] = {
        qb::method<"writeOnOutputStream:">(&NSObject::writeOnOutputStream),
        qb::method<"writeOnPropertyListOutputStream:">(&NSObject::writeOnPropertyListOutputStream),
    };
    return methods;
}

void NSObject::writeOnOutputStream(QBOutputStream *stream) {
    if (stream)
        stream->_writeNSObject(this);
}

void NSArray::writeOnOutputStream(QBOutputStream *stream) {
    if (stream)
        stream->_writeArray(this);
}

void NSDictionary::writeOnOutputStream(QBOutputStream *stream) {
    if (stream)
        stream->_writeDictionary(this);
}

void NSString::writeOnOutputStream(QBOutputStream *stream) {
    if (stream)
        stream->_writeString(this);
}

void NSData::writeOnOutputStream(QBOutputStream *stream) {
    if (stream)
        stream->writeBuffer(bytes(), length());
}

void NSEnumerator::writeOnOutputStream(QBOutputStream *stream) {
    if (stream)
        stream->_writeEnumerator(this);
}

// --- Property lists ---

void NSObject::writeOnPropertyListOutputStream(QBOutputStream *stream) {
    writeOnOutputStream(stream);
}

void NSData::writeOnPropertyListOutputStream(QBOutputStream *stream) {
    if (!stream)
        return;
    const NSAutoreleasePool pool;
    NSString *const text = description();
    stream->writeBuffer(text->cString(), text->cStringLength());
}
