#include <QBFoundation/QBInputFilter.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *QBInputFilter::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithSource:">(&QBInputFilter::setUpWithSource),
        qb::initialiser<"initWithSource:">(&QBInputFilter::setUpWithSource),
        qb::method<"source">(&QBInputFilter::source),
    };
    static Class *const self =
        new Class("QBInputFilter", QBInputStream::cls(), methods, qb::construct<QBInputFilter>);
    return self;
}

QBInputFilter::~QBInputFilter() = default;

BOOL QBInputFilter::setUpWithSource(QBInputStream *source) {
    if (!source)
        throw InvalidArgumentException("QBInputFilter initWithSource: must have a source that is not nil.");
    source_ = source;
    return YES;
}

void QBInputFilter::close() {
    if (source_)
        source_->close();
}

std::int32_t QBInputFilter::readBuffer(void *buffer, std::uint32_t length) {
    return source_ ? source_->readBuffer(buffer, length) : -1;
}

std::int32_t QBInputFilter::readByte() {
    return source_ ? source_->getByte() : -1;
}
