#include <QBFoundation/QBBase64OutputFilter.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Text/Base64.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace text = qb::text;

namespace {

constexpr const char *kFile = "src/QBBase64OutputFilter";

// The groups that are joined into one write at most: as much as a stream likes to find room for at once.
constexpr std::uint32_t kJoinedGroups = 1 << 18;

// Raises the error of a group of four that is no base64, and says whether it did.
bool isMalformed(const char *group) {
    for (int i = 0; i < 4; ++i) {
        if (text::base64Value(group[i]) != text::kNoBase64Value || (group[i] == '=' && i == 3))
            continue;
        if (group[i] == '=' && i == 2 && group[3] == '=')
            return false;
        qb::raiseError(kFile, group[i] == '=' && i == 2 ? 146 : 150, qb::kErrorMalformedBase64);
        return true;
    }
    return false;
}

bool mayGoOn() {
    return !ERRORHANDLER || ERRORHANDLER->errorState() == ERRORSTATE_OK;
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
    flush();
    target_->close();
}

void QBBase64OutputFilter::completeGroup() {
    const auto count = static_cast<std::size_t>(pendingCount_);
    pendingCount_ = 0;
    if (isDecoding_) {
        qb::raiseError(kFile, 212, qb::kErrorMalformedBase64);
        return;
    }
    char group[4];
    text::encodeBase64Rest(pending_, count, group);
    target_->_writeBuffer(group, sizeof group);
}

// --- Encoding ---

void QBBase64OutputFilter::encode(const char *bytes, std::uint32_t length) {
    if (pendingCount_ != 0) {
        const std::uint32_t missing = std::min(3 - static_cast<std::uint32_t>(pendingCount_), length);
        std::memcpy(pending_ + pendingCount_, bytes, missing);
        pendingCount_ += static_cast<std::int32_t>(missing);
        bytes += missing;
        length -= missing;
        if (pendingCount_ < 3)
            return;
        encodeGroups(pending_, 3);
        pendingCount_ = 0;
    }
    const std::uint32_t rest = length % 3;
    encodeGroups(bytes, length - rest);
    std::memcpy(pending_, bytes + (length - rest), rest);
    pendingCount_ = static_cast<std::int32_t>(rest);
}

void QBBase64OutputFilter::encodeGroups(const char *bytes, std::uint32_t length) {
    while (length != 0) {
        std::uint32_t taken = std::min(length, kJoinedGroups * 3);
        if (char *const room = target_->beginJoinedWrite(taken / 3 * 4)) {
            target_->endJoinedWrite(text::encodeBase64Groups(bytes, taken, room));
        } else {
            char group[4];
            taken = 3;
            text::encodeBase64Groups(bytes, taken, group);
            target_->_writeBuffer(group, sizeof group);
        }
        bytes += taken;
        length -= taken;
    }
}

// --- Decoding ---

void QBBase64OutputFilter::decode(const char *position, const char *end) {
    const qb::SavedErrors saved;
    while (position != end && mayGoOn()) {
        if (pendingCount_ == 0)
            position = decodeGroups(position, end);
        if (position == end)
            return;
        const char character = *position++;
        if (std::isspace(static_cast<unsigned char>(character)))
            continue;
        pending_[pendingCount_++] = character;
        if (pendingCount_ == 4)
            decodePending();
    }
}

// Decodes the groups at `position` that need no second look, and returns what is behind them.
const char *QBBase64OutputFilter::decodeGroups(const char *position, const char *end) {
    const auto groups = static_cast<std::uint32_t>((end - position) / 4);
    if (groups == 0)
        return position;
    const std::uint32_t joined = std::min(groups, kJoinedGroups);
    char *const room = target_->beginJoinedWrite(joined * 3);
    if (!room)
        return position;
    const text::Base64Result result =
        text::decodeBase64Groups(position, position + std::size_t{joined} * 4, room);
    target_->endJoinedWrite(result.end);
    return result.next;
}

void QBBase64OutputFilter::decodePending() {
    pendingCount_ = 0;
    if (isMalformed(pending_))
        return;
    const std::uint32_t length = pending_[2] == '=' ? 1 : pending_[3] == '=' ? 2 : 3;
    char group[4];
    std::copy(pending_, pending_ + 4, group);
    std::replace(group, group + 4, '=', 'A'); // whose bits are zero
    char bytes[3];
    text::decodeBase64Groups(group, group + 4, bytes);
    target_->_writeBuffer(bytes, length);
}
