// Messages that go to many objects.
#ifndef QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_H
#define QBFOUNDATION_RUNTIME_REPEATEDMESSAGE_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Method.h>
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
    /// What the sender asks for at most times. When an operation is a member function without values that
    /// returns just that, its call is part of the sender's loop.
    enum class Wanted : std::uint8_t { anything, object, boolean };

    explicit RepeatedMessage(Wanted wanted) noexcept : wanted_(wanted) {}
    ~RepeatedMessage();
    RepeatedMessage(const RepeatedMessage &) = delete;
    RepeatedMessage &operator=(const RepeatedMessage &) = delete;

    SEL selector() const { return selector_; }
    /// Keeps what was looked up for the last receiver's class.
    void setSelector(SEL selector) { selector_ = selector; }
    /// Looks up anew for the next receiver.
    void forget() { key_ = plainKey_ = nullptr; }
    /// Lets all of them look up anew, because an operation was added to a class.
    static void forgetAll();

    /// Whether `receiver` has an operation that takes `values`; it is what the next two call.
    bool reaches(id receiver, std::span<const id> values);
    /// Sends the message. Returns the object that is its result, not owned; nil for any other result.
    id object(id receiver, const id *values) const;
    /// Sends the message. Returns whether its result is neither 0 nor a null pointer; false without a result.
    bool isTrue(id receiver, const id *values) const;

    /// Whether the operation that was looked up serves `receiver` too, is a member function without values
    /// and returns what is wanted; then one of the next two calls it.
    bool isPlainFor(id receiver) const;
    id plainObject(id receiver) const;
    bool isPlainTrue(id receiver) const;

private:
    /// By the typed entry, with objects only, or by the listed one.
    enum class Call : std::uint8_t { none, typed, listed };

    void lookUp(id receiver, std::size_t valueCount);
    void enterList();
    bool takes(std::span<const id> values) const;
    bool returnsWanted() const;
    Value invoke(id receiver, const id *values) const;

    SEL selector_ = nullptr;
    const Method *method_ = nullptr;
    const void *key_ = nullptr;      // of the receivers that the rest is for, see `dispatchKey`
    const void *plainKey_ = nullptr; // the same for a plain operation, else null
    Method::TypedEntry plainOperation_ = nullptr;
    RepeatedMessage *next_ = nullptr;  // of those that have looked up
    RepeatedMessage **link_ = nullptr; // which leads to this one in their list; null outside of it
    Call call_ = Call::none;
    bool looksAtValues_ = false; // a parameter is not just any object
    const Wanted wanted_;
};

} // namespace qb

#endif
