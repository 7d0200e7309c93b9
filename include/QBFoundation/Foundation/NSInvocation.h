// Messages as objects.
#ifndef QBFOUNDATION_FOUNDATION_NSINVOCATION_H
#define QBFOUNDATION_FOUNDATION_NSINVOCATION_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Value.h>

#include <vector>

namespace qb {
class Forwarding;
}

/// A message with its receiver, its arguments and, once it was sent, its result.
class QB_EXPORT NSInvocation final : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a message without arguments, autoreleased. It retains the target.
    static NSInvocation *invocationWithTarget(id target, SEL selector);

    id target() const { return target_; }
    void setTarget(id target) { target_ = target; }
    SEL selector() const { return selector_; }
    void setSelector(SEL selector) { selector_ = selector; }

    /// Replaces the arguments, without receiver and selector; variable values as one `ArgList`, last.
    void setArguments(std::vector<qb::Value> arguments);
    const std::vector<qb::Value> &arguments() const { return arguments_; }

    /// Sends the message as `send` does; a nil target answers no value.
    /// Throws InvalidArgumentException when the arguments do not fit the operation.
    void invoke();
    /// Sends the message to `target` instead.
    void invokeWithTarget(id target);

    /// The result of the last `invoke`, or what was set; no value before.
    qb::Value returnValue() const { return returnValue_; }
    void setReturnValue(qb::Value value) {
        returnValue_ = std::move(value);
        returnsOwned_ = false;
    }
    /// Whether the operation of the last `invoke` returns an object that its sender owns, as `copy` does. The
    /// invocation's own value keeps a reference of its own in any case.
    bool returnsOwned() const { return returnsOwned_; }

private:
    friend class qb::Forwarding;

    Ref<NSObject> target_;
    SEL selector_ = nullptr;
    std::vector<qb::Value> arguments_;
    qb::Value returnValue_;
    bool returnsOwned_ = false;
};

#endif
