// Apart from the loops that call it, so that no call is decided when they are compiled.
#include <QBFoundation/Runtime/MethodTable.h>

#include "QBEnumFilterBench.h"

Class *Entry::cls() {
    static const qb::Method methods[] = {
        qb::method<"replacement">(&Entry::replacement),
        qb::method<"isInStock">(&Entry::isInStock),
        qb::method<"isBlocked">(&Entry::isBlocked),
    };
    static Class *const self = new Class("Entry", NSObject::cls(), methods, qb::construct<Entry>);
    return self;
}

Ref<Entry> Entry::initWithNumber(std::uint32_t number) {
    auto entry = Ref<Entry>::adopt(new Entry);
    entry->number_ = number;
    if (number % 10 != 0) { // nine of ten
        entry->replacement_ = Ref<Entry>::adopt(new Entry);
        entry->replacement_->number_ = (number * 0x9E3779B1U) >> 8;
    }
    return entry;
}

Entry *Entry::replacement() const {
    return replacement_.get();
}

BOOL Entry::isInStock() const {
    return number_ % 4 != 0;
}

BOOL Entry::isBlocked() const {
    return number_ % 8 == 1;
}
