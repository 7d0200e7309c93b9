#include <QBFoundation/QBDataInputStream.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include <algorithm>
#include <typeinfo>

namespace {
constexpr std::uintptr_t kPage = 4096;
} // namespace

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
        end_ = next_ + data->length();
        openWindow();
    }
    return YES;
}

std::uint32_t QBDataInputStream::byteLength() const {
    return sourceData_ ? sourceData_->length() : 0;
}

std::int32_t QBDataInputStream::_readBuffer(void *buffer, std::uint32_t length) {
    const std::uint32_t begin = position();
    const std::uint32_t end = QBDataInputStream::byteLength(); // a subclass may have more
    if (begin >= end)
        return -1;
    const std::uint32_t count = std::min({length, end - begin, std::uint32_t{INT32_MAX}});
    sourceData_->getBytes(buffer, NSMakeRange(begin, count));
    moveTo(begin + count);
    return static_cast<std::int32_t>(count);
}

const void *QBDataInputStream::takeBuffer(std::uint32_t length, std::int32_t *count) {
    if (!next_)
        return nullptr;
    *count = static_cast<std::int32_t>(std::min<std::int64_t>({length, end_ - next_, INT32_MAX}));
    const char *const taken = next_;
    moveTo(position() + static_cast<std::uint32_t>(*count));
    return taken;
}

void QBDataInputStream::reset() {
    moveTo(0);
}

void QBDataInputStream::moveTo(std::uint32_t position) {
    if (next_) {
        next_ = start() + position;
        openWindow();
    } else {
        position_ = position;
    }
}

// Puts the rest of a page at hand. The processor doesn't look ahead beyond it by itself, so that the
// beginning of the next page is fetched meanwhile.
void QBDataInputStream::openWindow() {
    constexpr std::ptrdiff_t kLine = 64;
    constexpr std::ptrdiff_t kFetched = 8 * kLine;
    const auto rest = static_cast<std::ptrdiff_t>(kPage - reinterpret_cast<std::uintptr_t>(next_) % kPage);
    directEnd_ = next_ + std::min(rest, end_ - next_);
    const char *const fetchEnd = directEnd_ + std::min(kFetched, end_ - directEnd_);
    for (const char *line = directEnd_; line < fetchEnd; line += kLine)
        __builtin_prefetch(line);
}

std::int32_t QBDataInputStream::readByteByBuffer() {
    signed char byte = 0;
    return readBuffer(&byte, 1) < 0 ? -1 : byte;
}
