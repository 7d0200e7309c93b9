#include <QBFoundation/QBStringOutputStream.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include <utility>

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
        const std::uint32_t length = byteCounter();
        const char *const terminated = length < kWorthGiving ? nullptr : terminatedBuf();
        if (terminated) {
            targetString_ = Ref<NSString>::adopt(new NSString(terminated, length, NSString::kOwnsBytes));
            giveBufferAway();
        } else {
            targetString_ = NSString::initWithCString(buf(), length);
            announceNextWrite();
        }
    }
    return Ref<NSString>(targetString_).autorelease();
}

void QBStringOutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    const Ref<NSString> kept = std::exchange(targetString_, nullptr); // for its bytes may be the buffer
    QBBufferOutputStream::_writeBuffer(buffer, length);
}

void QBStringOutputStream::reset() {
    targetString_ = nullptr;
    QBBufferOutputStream::reset();
}
