#include <QBFoundation/QBInputStream.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include <algorithm>

Class *QBInputStream::cls() {
    static const qb::Method methods[] = {
        qb::method<"isBinary">(&QBInputStream::isBinary),
        qb::method<"close">(&QBInputStream::close),
        qb::method<"readBuffer:length:">(&QBInputStream::readBuffer),
        qb::method<"_readBuffer:length:">(&QBInputStream::_readBuffer),
        qb::method<"readByte">(&QBInputStream::readByte),
        qb::method<"getInputStream">(&QBInputStream::getInputStream),
    };
    static Class *const self = new Class("QBInputStream", NSObject::cls(), methods);
    return self;
}

std::int32_t QBInputStream::readBufferByPrimitive(void *buffer, std::uint32_t length) {
    if (!buffer)
        throw InvalidArgumentException(
            "QBInputStream readBuffer:length: must have a buffer that is not NULL.");
    return length == 0 ? 0 : _readBuffer(buffer, length);
}

std::int32_t QBInputStream::readByte() {
    subclassResponsibility("readByte"_sel);
    return -1;
}

std::int32_t QBInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    auto *const bytes = static_cast<char *>(buffer);
    const auto most = static_cast<std::int32_t>(std::min<std::uint32_t>(length, INT32_MAX));
    std::int32_t count = 0;
    while (count < most) {
        const std::int32_t byte = readByte();
        if (byte == -1)
            break;
        bytes[count++] = static_cast<char>(byte);
    }
    return count > 0 ? count : -1;
}

const void *QBInputStream::takeBuffer(std::uint32_t, std::int32_t *) {
    return nullptr;
}
