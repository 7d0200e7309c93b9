// Messages that go to many objects.
#ifndef QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_H
#define QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Types.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace qb {

/// A message whose operation is looked up once for a run of receivers of one class, and anew when an
/// operation was added to a class meanwhile.
///
/// Its values are objects, of which an operation gets as many as it takes. One that takes more, or a value of
/// another kind, counts as not there; nil serves for any kind of pointer.
class RepeatedMessage {
public:
    SEL selector() const { return selector_; }
    /// Keeps what was looked up for the last receiver's class.
    void setSelector(SEL selector) { selector_ = selector; }
    /// Looks up anew for the next receiver.
    void forget() { key_ = nullptr; }

    /// Whether `receiver` has an operation that takes `values`; it is what the next two call.
    bool reaches(id receiver, std::span<const id> values);
    /// Sends the message. Returns the object that is its result, autoreleased; nil for any other result.
    id object(id receiver, const id *values) const;
    /// Sends the message. Returns whether its result is neither 0 nor a null pointer; false without a result.
    bool isTrue(id receiver, const id *values) const;

private:
    /// How the operation is called: by its typed entry, for the commonest results, or by the listed one.
    enum class Call : std::uint8_t { none, object, signedByte, unsignedByte, listed };

    void lookUp(id receiver, std::size_t valueCount);
    static Call callFor(const Method *method, std::size_t valueCount);
    bool takes(std::span<const id> values) const;
    Value invoke(id receiver, const id *values) const;
    static id objectOf(const Value &result);
    static bool isTrueValue(const Value &result);

    SEL selector_ = nullptr;
    const Method *method_ = nullptr;
    const void *key_ = nullptr; // of the receivers that the rest is for, see `dispatchKey`
    std::uint32_t generation_ = 0;
    Call call_ = Call::none;
    bool looksAtValues_ = false; // a parameter is not just any object
};

} // namespace qb

#endif
