#include <QBFoundation/QBDataInputStream.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include <algorithm>
#include <typeinfo>
#include <utility>

Class *QBDataInputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithData:">(&QBDataInputStream::setUpWithData),
        qb::initialiser<"initWithData:">(&QBDataInputStream::setUpWithData),
    };
    static Class *const self = new Class("QBDataInputStream", QBInputStreamWithKnownLength::cls(), methods,
                                         qb::construct<QBDataInputStream>);
    return self;
}

QBDataInputStream::~QBDataInputStream() = default;

BOOL QBDataInputStream::setUpWithData(NSData *data) {
    sourceData_ = data;
    if (data && typeid(*data) == typeid(NSData) && typeid(*this) == typeid(QBDataInputStream)) {
        next_ = start();
        directEnd_ = next_ + std::min<std::uint32_t>(data->length(), INT32_MAX);
    }
    return YES;
}

std::uint32_t QBDataInputStream::byteLength() const {
    return sourceData_ ? sourceData_->length() : 0;
}

std::int32_t QBDataInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    const std::uint32_t begin = position();
    const std::uint32_t end = byteLength();
    if (begin >= end)
        return -1;
    const std::uint32_t count = std::min({length, end - begin, std::uint32_t{INT32_MAX}});
    sourceData_->getBytes(buffer, NSMakeRange(begin, count));
    moveTo(begin + count);
    return static_cast<std::int32_t>(count);
}

const void *QBDataInputStream::takeBuffer(std::uint32_t length, std::int32_t *count) {
    if (next_ >= directEnd_)
        return nullptr;
    *count = static_cast<std::int32_t>(std::min<std::int64_t>(length, directEnd_ - next_));
    return std::exchange(next_, next_ + *count);
}

void QBDataInputStream::reset() {
    moveTo(0);
}

void QBDataInputStream::moveTo(std::uint32_t position) {
    if (next_)
        next_ = start() + position;
    else
        position_ = position;
}

std::int32_t QBDataInputStream::readByteByBuffer() {
    signed char byte = 0;
    return readBuffer(&byte, 1) < 0 ? -1 : byte;
}
