// "No value" as an object.
#ifndef QBFOUNDATION_QBNIL_H
#define QBFOUNDATION_QBNIL_H

#include <QBFoundation/Foundation/NSObject.h>

/// Whether there is no value: a null pointer, the null object, or an object that answers `isNil` with YES.
/// The library's one test for it.
extern "C" QB_EXPORT BOOL IsNil(id object);

/// The null object: stands for "no value" where a null pointer can't, in collections and serialised data.
///
/// There is one, which is never freed. It accepts every message and answers nil or 0 to those that it has no
/// rule for.
class QB_EXPORT QBNil final : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the null object (selector `new`).
    static QBNil *new_();
    static QBNil *value() { return new_(); }
    /// The test of `IsNil` (selector `isNil:`).
    static BOOL isNilOfClass(id object) { return IsNil(object); }

    BOOL isNil() const override { return YES; }
    BOOL isNotNil() const override { return NO; }
    BOOL containsData() const override { return NO; }
    std::int32_t intValue() const { return 0; }
    NSString *stringValue() const override { return nullptr; }
    id standardizedISODateTimeString() const override { return self(); }
    const char *cStringValue() const override { return "null"; }
    NSString *asPhpString() const override;
    id objectForKey(id key) const override;
    void setObjectForKey(id object, id key) override;
    void removeObjectForKey(id key) override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }
    Ref<NSObject> mutableCopyWithZone(void *) const override { return self(); }

    /// Accepts the message; the result stays no value. From `debug` 7 on it is traced on the channel `misc`.
    void forwardInvocation(NSInvocation *invocation) override;

    // What every object answers, answered with nothing.
    NSComparisonResult compare(id) const override { return NSOrderedSame; }
    NSString *description() const override { return nullptr; }
    NSString *descriptionWithLocale(NSDictionary *) const override { return nullptr; }
    id makeMutable() const override { return self(); }
    void doesNotRecognizeSelector(SEL) const override {}
    void subclassResponsibility(SEL) const override {}
    void setDeepObject(id, NSString *) override {}
    NSData *asData() const override { return nullptr; }
    void encodeWithCoder(NSCoder *coder) const override;

private:
    QBNil() { makeImmortal(); }
    void swallow(SEL selector) const;
};

#endif
