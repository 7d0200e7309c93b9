#include "support/QBTally.h"

#include <QBFoundation/Runtime/MethodTable.h>

qb::MethodTables QBTally::methods() {
    using Count = std::uint32_t;
    static const qb::Method table[] = {
        qb::maker<"tallyWithLimit:">(&QBTally::setUpWithLimit),
        qb::initialiser<"initWithLimit:">(&QBTally::setUpWithLimit),
        qb::method<"addString:", Count(NSString *)>(&QBTally::addString),
        qb::method<"addString:times:", Count(NSString *, Count)>(&QBTally::addString),
        qb::method<"countForString:">(&QBTally::countForString),
        qb::method<"allStrings">(&QBTally::allStrings),
    };
    return table;
}

static const qb::ClassRegistration registration{&SharedTally::cls};
