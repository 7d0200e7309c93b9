// A client's class, as the tests of dispatch need one.
#ifndef QBFOUNDATION_TESTS_SUPPORT_QBTALLY_H
#define QBFOUNDATION_TESTS_SUPPORT_QBTALLY_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Ref.h>

#include "support/ClientClass.h"

#include <cstdint>

class NSArray;
class NSMutableDictionary;
class NSString;

/// Counts how often each string has been added.
class QBTally : public NSObject {
public:
    QBTally();
    ~QBTally() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBTally *tallyWithLimit(std::uint32_t limit) { return initWithLimit(limit).autorelease(); }
    static Ref<QBTally> initWithLimit(std::uint32_t limit) {
        return qb::init<QBTally>(&QBTally::setUpWithLimit, limit);
    }

    std::uint32_t addString(NSString *string) { return addString(string, 1); }
    virtual std::uint32_t addString(NSString *string, std::uint32_t times);
    virtual std::uint32_t countForString(NSString *string) const;
    virtual NSArray *allStrings() const;

protected:
    /// Answers NO for a limit of UINT32_MAX.
    virtual BOOL setUpWithLimit(std::uint32_t limit);

private:
    Ref<NSMutableDictionary> counts_;
};

/// A subclass that repeats the makers it inherits, typed for itself.
struct SharedTally : ClientClass<SharedTally, QBTally, "SharedTally"> {
    static SharedTally *tallyWithLimit(std::uint32_t limit) {
        return qb::init<SharedTally>(&SharedTally::setUpWithLimit, limit).autorelease();
    }
};

#endif
