#include <QBFoundation/QBArrayOutputStream.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *QBArrayOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::method<"targetArray">(&QBArrayOutputStream::targetArray),
    };
    static Class *const self =
        new Class("QBArrayOutputStream", QBOutputStream::cls(), methods, qb::construct<QBArrayOutputStream>);
    return self;
}

QBArrayOutputStream::~QBArrayOutputStream() = default;

void QBArrayOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    targetArray_->addObject(NSData::initWithBytes(buffer, length).autorelease());
}

void QBArrayOutputStream::writeObject(id object) {
    targetArray_->addObject(object);
}

void QBArrayOutputStream::reset() {
    flush();
    targetArray_->removeAllObjects();
}
