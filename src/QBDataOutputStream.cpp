#include <QBFoundation/QBDataOutputStream.h>

#include <QBFoundation/Runtime/MethodTable.h>

Class *QBDataOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::method<"targetData">(&QBDataOutputStream::targetData),
    };
    static Class *const self = new Class("QBDataOutputStream", QBBufferOutputStream::cls(), methods,
                                         qb::construct<QBDataOutputStream>);
    return self;
}

QBDataOutputStream::~QBDataOutputStream() = default;

BOOL QBDataOutputStream::setUpWithCapacity(std::uint32_t capacity) {
    if (!QBBufferOutputStream::setUpWithCapacity(capacity))
        return NO;
    allowDirectWrites<QBDataOutputStream>();
    return YES;
}

NSData *QBDataOutputStream::targetData() const {
    if (!targetData_ && buf()) {
        targetData_ = NSData::initWithBytes(buf(), byteCounter());
        announceNextWrite();
    }
    return Ref<NSData>(targetData_).autorelease();
}

void QBDataOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    targetData_ = nullptr;
    QBBufferOutputStream::_writeBuffer(buffer, length);
}

void QBDataOutputStream::reset() {
    targetData_ = nullptr;
    QBBufferOutputStream::reset();
}
