// A single object where an enumerator is wanted.
#ifndef QBFOUNDATION_ONESHOTENUMERATOR_H
#define QBFOUNDATION_ONESHOTENUMERATOR_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Ref.h>

/// Yields one object, then nil for ever.
class QB_EXPORT OneShotEnumerator : public NSObject {
public:
    OneShotEnumerator() noexcept = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns an enumerator that keeps `object` until it was asked for it; nil is the end at once.
    static Ref<OneShotEnumerator> initWithObject(id object) {
        return qb::init<OneShotEnumerator>(&OneShotEnumerator::setUpWithObject, object);
    }

    id nextObject() override { return object_.autorelease(); }

protected:
    /// The initialiser `initWithObject:`.
    virtual BOOL setUpWithObject(id object);

private:
    Ref<NSObject> object_;
};

#endif
