#include "support/QBTally.h"

#include <QBFoundation/QBFoundation.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *QBTally::cls() {
    using Count = std::uint32_t;
    static const qb::Method methods[] = {
        qb::maker<"tallyWithLimit:">(&QBTally::setUpWithLimit),
        qb::initialiser<"initWithLimit:">(&QBTally::setUpWithLimit),
        qb::method<"addString:", Count(NSString *)>(&QBTally::addString),
        qb::method<"addString:times:", Count(NSString *, Count)>(&QBTally::addString),
        qb::method<"countForString:">(&QBTally::countForString),
        qb::method<"allStrings">(&QBTally::allStrings),
    };
    static Class *const self = new Class("QBTally", NSObject::cls(), methods, qb::construct<QBTally>);
    return self;
}

QBTally::QBTally() : counts_(NSMutableDictionary::init()) {}
QBTally::~QBTally() = default;

BOOL QBTally::setUpWithLimit(std::uint32_t limit) {
    return limit != UINT32_MAX;
}

std::uint32_t QBTally::addString(NSString *string, std::uint32_t times) {
    const std::uint32_t count = countForString(string) + times;
    counts_->setObjectForKey(NSNumber::numberWithUnsignedInt(count), string);
    return count;
}

std::uint32_t QBTally::countForString(NSString *string) const {
    auto *number = qb::castOrNil<NSNumber>(counts_->objectForKey(string));
    return number ? number->unsignedIntValue() : 0;
}

NSArray *QBTally::allStrings() const {
    return counts_->allKeys();
}

static const qb::ClassRegistration registration{&SharedTally::cls};
