#include <QBFoundation/QBValidCharFilter.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "TargetClosing.h"
#include "Text/Scan.h"

#include <string>

namespace {

constexpr qb::text::ByteSet kInvalid = qb::text::ByteSet().with(0, 8).with(11, 12).with(14, 31);

template <class... V>
void warn(NSString *format, const V &...values) {
    OSLogger::loggerForCategory("warning"_ns)->logWithLevelFormat(/*level=*/0, format, values...);
}

// Returns the bytes without the invalid ones, the first of which is at `hit`, and logs those.
std::string valid(const char *bytes, const char *end, const char *hit) {
    std::string kept;
    const char *run = bytes;
    for (; hit != end; hit = qb::text::findIn(run, end, kInvalid)) {
        kept.append(run, hit);
        run = hit + 1;
        warn("Removing invalid XML char at pos %d: 0x%02x"_ns, static_cast<std::uint32_t>(hit - bytes),
             static_cast<unsigned>(static_cast<unsigned char>(*hit)));
    }
    return kept.append(run, end);
}

} // namespace

Class *QBValidCharFilter::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithTarget:">(&QBValidCharFilter::setUpWithTarget),
        qb::initialiser<"initWithTarget:">(&QBValidCharFilter::setUpWithTarget),
        qb::method<"target">(&QBValidCharFilter::target),
    };
    static Class *const self =
        new Class("QBValidCharFilter", QBOutputStream::cls(), methods, qb::construct<QBValidCharFilter>);
    return self;
}

QBValidCharFilter::~QBValidCharFilter() = default;

BOOL QBValidCharFilter::setUp() {
    throw InvalidUseOfMethodException("QBValidCharFilter init: must be made with a target.");
}

BOOL QBValidCharFilter::setUpWithTarget(QBOutputStream *target) {
    if (!target)
        throw InvalidArgumentException(
            "QBValidCharFilter initWithTarget: must have a target that is not nil.");
    target_ = target;
    return YES;
}

void QBValidCharFilter::_writeBuffer(const void *buffer, std::uint32_t length) {
    const auto *const bytes = static_cast<const char *>(buffer);
    const char *const end = bytes + length;
    const char *const hit = qb::text::findIn(bytes, end, kInvalid);
    if (hit == end) {
        target_->writeBuffer(buffer, length);
        return;
    }
    const std::string kept = valid(bytes, end, hit);
    target_->writeBuffer(kept.data(), static_cast<std::uint32_t>(kept.size()));
    target_->flush();
}

void QBValidCharFilter::writeByte(char byte) {
    const auto value = static_cast<signed char>(byte); // so that bytes from 128 on are below 32
    if (value > 31 || value == '\t' || value == '\n' || value == '\r')
        target_->putByte(byte);
    else
        warn("Removing invalid XML char: 0x%02x"_ns, static_cast<std::int32_t>(value));
}

void QBValidCharFilter::flush() {
    target_->flush();
    QBOutputStream::flush();
}

void QBValidCharFilter::close() {
    qb::closeAfter(target_, [this] { flush(); });
}
