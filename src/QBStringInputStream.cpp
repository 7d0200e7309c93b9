#include <QBFoundation/QBStringInputStream.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Text/Utf8.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

Class *QBStringInputStream::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithString:">(&QBStringInputStream::setUpWithString),
        qb::initialiser<"initWithString:">(&QBStringInputStream::setUpWithString),
    };
    static Class *const self = new Class("QBStringInputStream", QBInputStreamWithKnownLength::cls(), methods,
                                         qb::construct<QBStringInputStream>);
    return self;
}

QBStringInputStream::~QBStringInputStream() = default;

BOOL QBStringInputStream::setUpWithString(NSString *string) {
    sourceString_ = string;
    isConstant_ = string && typeid(*string) == typeid(NSString);
    const bool isAscii = isConstant_ && string->isAscii();
    ascii_ = isAscii ? string->cString() : nullptr;
    asciiEnd_ = isAscii ? string->cStringLength() : 0;
    return YES;
}

std::uint32_t QBStringInputStream::byteLength() const {
    return sourceString_ ? sourceString_->cStringLength() : 0;
}

std::int32_t QBStringInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    const std::uint32_t end = QBStringInputStream::byteLength(); // a subclass may have more
    if (position_ >= end)
        return -1;
    const std::uint32_t count = std::min({length, end - position_, std::uint32_t{INT32_MAX}});
    std::memcpy(buffer, sourceString_->cString() + position_, count);
    position_ += count;
    return static_cast<std::int32_t>(count);
}

std::int32_t QBStringInputStream::readCharacter() {
    if (position_ >= QBStringInputStream::byteLength())
        return -1;
    if (!isConstant_)
        return position_ < sourceString_->length() ? sourceString_->characterAtIndex(position_++) : -1;
    if (!findCharacter())
        return -1;
    const std::string_view text = sourceString_->view();
    std::uint32_t codePoint = 0;
    const auto bytes = static_cast<std::uint32_t>(
        qb::text::decodeLenient(text.data() + foundByte_, text.data() + text.size(), &codePoint));
    const bool isPair = codePoint >= 0x10000;
    const bool isSecond = position_ != foundUnit_;
    isHalfRead_ = isPair && !isSecond;
    ++position_;
    if (isHalfRead_)
        return static_cast<std::int32_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    foundUnit_ = position_;
    foundByte_ += bytes;
    return static_cast<std::int32_t>(isPair ? 0xDC00 + ((codePoint - 0x10000) & 0x3FF) : codePoint);
}

// Makes the found character the one that holds the unit at the position; false when there are not so many.
bool QBStringInputStream::findCharacter() {
    if (position_ != foundUnit_ + (isHalfRead_ ? 1 : 0)) {
        const std::string_view text = sourceString_->view();
        bool isSecondHalf = false;
        foundByte_ = static_cast<std::uint32_t>(
            qb::text::byteOffsetOfUnit(text.data(), text.size(), position_, &isSecondHalf));
        foundUnit_ = position_ - (isSecondHalf ? 1 : 0);
    }
    return foundByte_ < QBStringInputStream::byteLength();
}
