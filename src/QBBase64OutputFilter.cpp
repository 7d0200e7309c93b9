#include <QBFoundation/QBBase64OutputFilter.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "TargetClosing.h"
#include "Text/Base64.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace text = qb::text;

namespace {

constexpr const char *kFile = "src/QBBase64OutputFilter";

// The groups that are joined into one write at most: as much as a stream likes to find room for at once.
constexpr std::uint32_t kJoinedGroups = 1 << 18;

// Raises the error of a group of four that is no base64; the lines tell what is wrong.
void raiseMalformed(const char *group) {
    const bool hasPadding = text::base64Value(group[0]) != text::kNoBase64Value &&
                            text::base64Value(group[1]) != text::kNoBase64Value && group[2] == '=';
    qb::raiseError(kFile, hasPadding ? 146 : 150, qb::kErrorMalformedBase64);
}

} // namespace

Class *QBBase64OutputFilter::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithTarget:">(&QBBase64OutputFilter::setUpWithTarget),
        qb::initialiser<"initWithTarget:">(&QBBase64OutputFilter::setUpWithTarget),
        qb::maker<"streamWithTarget:decode:">(&QBBase64OutputFilter::setUpWithTargetDecode),
        qb::initialiser<"initWithTarget:decode:">(&QBBase64OutputFilter::setUpWithTargetDecode),
        qb::method<"target">(&QBBase64OutputFilter::target),
    };
    static Class *const self = new Class("QBBase64OutputFilter", QBOutputStream::cls(), methods,
                                         qb::construct<QBBase64OutputFilter>);
    return self;
}

QBBase64OutputFilter::~QBBase64OutputFilter() = default;

BOOL QBBase64OutputFilter::setUp() {
    throw InvalidUseOfMethodException("QBBase64OutputFilter init: must be made with a target.");
}

BOOL QBBase64OutputFilter::setUpWithTarget(QBOutputStream *target) {
    if (!target)
        throw InvalidArgumentException(
            "QBBase64OutputFilter initWithTarget: must have a target that is not nil.");
    target_ = target;
    return YES;
}

BOOL QBBase64OutputFilter::setUpWithTargetDecode(QBOutputStream *target, BOOL) {
    isDecoding_ = true;
    return QBBase64OutputFilter::setUpWithTarget(target);
}

void QBBase64OutputFilter::_writeBuffer(const void *buffer, std::uint32_t length) {
    const auto *bytes = static_cast<const char *>(buffer);
    if (length == 0) // no bytes may come without an address
        return;
    if (isDecoding_)
        decode(bytes, bytes + length);
    else
        encode(bytes, length);
}

void QBBase64OutputFilter::flush() {
    if (pendingCount_ != 0)
        completeGroup();
    target_->flush();
    QBOutputStream::flush();
}

void QBBase64OutputFilter::close() {
    qb::closeAfter(target_, [this] { flush(); });
}

void QBBase64OutputFilter::completeGroup() {
    const auto count = static_cast<std::size_t>(pendingCount_);
    pendingCount_ = 0;
    if (isDecoding_) {
        qb::raiseError(kFile, 212, qb::kErrorMalformedBase64);
        return;
    }
    std::uint32_t one = 1;
    if (char *const room = target_->beginJoinedWrite(4, one)) {
        target_->endJoinedWrite(text::encodeBase64Rest(pending_, count, room));
        return;
    }
    char group[4];
    text::encodeBase64Rest(pending_, count, group);
    target_->_writeBuffer(group, sizeof group);
}

// --- Encoding ---

[[gnu::always_inline]] inline void QBBase64OutputFilter::encodeGroups(const char *bytes,
                                                                      std::uint32_t count) {
    while (count != 0) {
        std::uint32_t joined = std::min(count, kJoinedGroups);
        if (char *const room = target_->beginJoinedWrite(4, joined)) [[likely]] {
            target_->endJoinedWrite(text::encodeBase64Groups(bytes, joined, room));
        } else {
            joined = 1;
            char group[4];
            text::encodeBase64Groups(bytes, 1, group);
            target_->_writeBuffer(group, sizeof group);
        }
        count -= joined;
        bytes += std::size_t{joined} * 3;
    }
}

void QBBase64OutputFilter::encode(const char *bytes, std::uint32_t length) {
    fillGroups(bytes, length);
    const std::uint32_t groups = length / 3;
    encodeGroups(bytes, groups);
    bytes += std::size_t{groups} * 3;
    length -= groups * 3;
    fillGroups(bytes, length); // behind what the target has written to this filter
    if (length == 0)
        return;
    pending_[0] = bytes[0];
    if (length > 1)
        pending_[1] = bytes[1];
    pendingCount_ = static_cast<std::int32_t>(length);
}

// Goes on with a pending group, if there is one, and takes from the bytes what it needs.
inline void QBBase64OutputFilter::fillGroups(const char *&bytes, std::uint32_t &length) {
    while (pendingCount_ != 0 && length != 0)
        [[unlikely]] fillGroup(bytes, length);
}

// Writes the pending group when it is complete.
[[gnu::noinline]] void QBBase64OutputFilter::fillGroup(const char *&bytes, std::uint32_t &length) {
    const std::uint32_t taken = std::min(3 - static_cast<std::uint32_t>(pendingCount_), length);
    std::memcpy(pending_ + pendingCount_, bytes, taken);
    pendingCount_ += static_cast<std::int32_t>(taken);
    bytes += taken;
    length -= taken;
    if (pendingCount_ == 3) {
        pendingCount_ = 0;
        encodeGroups(pending_, 1);
    }
}

// --- Decoding ---

void QBBase64OutputFilter::decode(const char *position, const char *end) {
    if (pendingCount_ == 0)
        position = decodeGroups(position, end);
    if (position != end)
        decodeOneByOne(position, end);
}

void QBBase64OutputFilter::decodeOneByOne(const char *position, const char *end) {
    const qb::SavedErrors saved;
    while (position != end && !qb::isErrorPending()) {
        const char character = *position++;
        if (std::isspace(static_cast<unsigned char>(character)))
            continue;
        pending_[pendingCount_++] = character;
        if (pendingCount_ != 4)
            continue;
        if (!decodePending()) // whether the error stays or not
            return;
        if (!qb::isErrorPending())
            position = decodeGroups(position, end);
    }
}

// Decodes the groups at `position` that need no second look, and returns what is behind them. Raises nothing.
const char *QBBase64OutputFilter::decodeGroups(const char *position, const char *end) {
    while (end - position >= 4) {
        std::uint32_t joined = std::min(static_cast<std::uint32_t>((end - position) / 4), kJoinedGroups);
        char *const room = target_->beginJoinedWrite(3, joined);
        if (!room)
            return position;
        const char *const joinedEnd = position + std::size_t{joined} * 4;
        text::Base64Result result = text::decodeBase64Groups(position, joinedEnd, room);
        position = result.next;
        if (char *const last =
                position != joinedEnd ? text::decodeBase64Last(position, result.end) : nullptr) {
            result.end = last;
            position += 4;
        }
        target_->endJoinedWrite(result.end);
        if (position != joinedEnd)
            return position;
    }
    return position;
}

// Returns false, with the error raised, when it is malformed.
bool QBBase64OutputFilter::decodePending() {
    pendingCount_ = 0;
    char bytes[3];
    const char *const last = text::decodeBase64Last(pending_, bytes);
    if (last)
        target_->_writeBuffer(bytes, static_cast<std::uint32_t>(last - bytes));
    else
        raiseMalformed(pending_);
    return last != nullptr;
}
