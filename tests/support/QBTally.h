// A client's class, as the tests of dispatch need one.
#ifndef QBFOUNDATION_TESTS_SUPPORT_QBTALLY_H
#define QBFOUNDATION_TESTS_SUPPORT_QBTALLY_H

#include <QBFoundation/QBFoundation.h>

#include "support/ClientClass.h"

/// Counts how often each string has been added.
class QBTally : public ClientClass<QBTally, NSObject, "QBTally"> {
public:
    static qb::MethodTables methods() {
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

    static QBTally *tallyWithLimit(std::uint32_t limit) { return initWithLimit(limit).autorelease(); }
    static Ref<QBTally> initWithLimit(std::uint32_t limit) {
        return qb::init<QBTally>(&QBTally::setUpWithLimit, limit);
    }

    std::uint32_t addString(NSString *string) { return addString(string, 1); }
    virtual std::uint32_t addString(NSString *string, std::uint32_t times) {
        const std::uint32_t count = countForString(string) + times;
        counts_->setObjectForKey(NSNumber::numberWithUnsignedInt(count), string);
        return count;
    }
    virtual std::uint32_t countForString(NSString *string) const {
        auto *number = qb::castOrNil<NSNumber>(counts_->objectForKey(string));
        return number ? number->unsignedIntValue() : 0;
    }
    virtual NSArray *allStrings() const { return counts_->allKeys(); }

protected:
    /// Answers NO for a limit of UINT32_MAX.
    virtual BOOL setUpWithLimit(std::uint32_t limit) { return limit != UINT32_MAX; }

private:
    const Ref<NSMutableDictionary> counts_ = NSMutableDictionary::init();
};

/// A subclass that repeats the makers it inherits, typed for itself.
struct SharedTally : ClientClass<SharedTally, QBTally, "SharedTally"> {
    static SharedTally *tallyWithLimit(std::uint32_t limit) {
        return qb::init<SharedTally>(&SharedTally::setUpWithLimit, limit).autorelease();
    }
};

inline const qb::ClassRegistration registrationOfSharedTally{&SharedTally::cls};

#endif
