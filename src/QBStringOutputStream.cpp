#include <QBFoundation/QBStringOutputStream.h>

#include <QBFoundation/Runtime/MethodTable.h>

Class *QBStringOutputStream::cls() {
    static const qb::Method methods[] = {
        qb::method<"targetString">(&QBStringOutputStream::targetString),
    };
    static Class *const self = new Class("QBStringOutputStream", QBBufferOutputStream::cls(), methods,
                                         qb::construct<QBStringOutputStream>);
    return self;
}

QBStringOutputStream::~QBStringOutputStream() = default;

BOOL QBStringOutputStream::setUpWithCapacity(std::uint32_t capacity) {
    if (!QBBufferOutputStream::setUpWithCapacity(capacity))
        return NO;
    allowDirectWrites<QBStringOutputStream>();
    return YES;
}

NSString *QBStringOutputStream::targetString() const {
    if (!targetString_ && buf()) {
        targetString_ = NSString::initWithCString(buf(), byteCounter());
        announceNextWrite();
    }
    return Ref<NSString>(targetString_).autorelease();
}

void QBStringOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    targetString_ = nullptr;
    QBBufferOutputStream::_writeBuffer(buffer, length);
}

void QBStringOutputStream::reset() {
    targetString_ = nullptr;
    QBBufferOutputStream::reset();
}
