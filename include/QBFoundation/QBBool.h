// Truth values as objects.
#ifndef QBFOUNDATION_QBBOOL_H
#define QBFOUNDATION_QBBOOL_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

/// A truth value that does not change; texts write it as "true" or "false".
class QB_EXPORT QBBool : public NSObject {
public:
    QBBool() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBBool *booleanWithValue(BOOL value) { return initWithValue(value).autorelease(); }
    static Ref<QBBool> initWithValue(BOOL value) { return qb::init<QBBool>(&QBBool::setUpWithValue, value); }
    /// Returns the one instance that the process keeps for true.
    static QBBool *trueBoolean();
    static QBBool *falseBoolean();

    /// Returns what was put in, which for true may be any value but 0.
    virtual BOOL value() const { return value_; }
    virtual BOOL boolValue() const { return value_; }
    virtual BOOL isTrue() const { return value_; }
    /// Returns 1 for true, 0 for false.
    virtual std::int32_t intValue() const { return value_ ? 1 : 0; }

    NSString *stringValue() const override;
    NSString *description() const override;
    Ref<NSObject> copyWithZone(void *) const override { return self(); }

protected:
    virtual BOOL setUpWithValue(BOOL value);

private:
    BOOL value_ = NO;
};

#endif
