#include <QBFoundation/Foundation/NSObject.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSInvocation.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/NSObject.Tables.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace {

// How much of the stack destructors that call each other may take before the rest is put aside. A destructor
// may count on what it has released being gone, so that it is much.
constexpr std::uintptr_t kMostStack = 128 * 1024;

// The objects that were put aside, each with a reference. There are places for a few, so that a chain goes
// even without memory: it puts one aside at a time, and the small objects beside it, which are taken in their
// turn. Only when all places are taken are there others.
struct Waiting {
    static constexpr unsigned kPlaces = 64;

    NSObject *places[kPlaces] = {};
    unsigned first = 0;
    unsigned count = 0; // of the places that are taken, from the first one on and round
    union {             // never destroyed, because objects may still go while the process ends
        std::vector<NSObject *> others;
    };

    constexpr Waiting() : others() {}
    constexpr ~Waiting() {}

    void add(NSObject *object) {
        if (count == kPlaces)
            others.push_back(object);
        else
            places[(first + count++) % kPlaces] = object;
    }
    NSObject *take() {
        if (others.empty()) {
            --count;
            return places[first++ % kPlaces];
        }
        NSObject *const last = others.back();
        others.pop_back();
        return last;
    }
};
constinit Waiting waiting;

// Where the outermost of the destructors that are calling each other has its stack; 0 when none is called.
constinit std::uintptr_t outermostFrame = 0;

inline std::uintptr_t frame() {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
}

// What is rarely done stands apart, so that the usual destruction saves no registers for it.

// Returns false when there is no memory; the object is destroyed at once then, and what it owns tries again.
[[gnu::noinline]] bool putAside(NSObject *object) noexcept {
    try {
        waiting.add(object);
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

// What was put aside may have found another owner meanwhile.
[[gnu::noinline]] void destroyWaiting() noexcept {
    while (waiting.count != 0) {
        NSObject *const object = waiting.take();
        if (object->retainCount() > 1)
            object->release();
        else
            delete object;
    }
}

std::string placeOf(const NSObject *object, const char *selector) {
    return std::string(object->classObject()->nameView()) + " " + selector;
}

} // namespace

namespace qb {

void destroy(NSObject *object) noexcept {
    object->retain(); // so that what destructors call may retain and release it
    if (outermostFrame != 0) {
        const bool isStackTaken = outermostFrame - frame() > kMostStack; // it grows downwards
        if (!isStackTaken || !putAside(object))
            delete object;
        return;
    }
    outermostFrame = frame();
    delete object;
    if (waiting.count != 0) [[unlikely]]
        destroyWaiting();
    outermostFrame = 0;
}

} // namespace qb

Class *NSObject::cls() {
    static const qb::Method methods[] = {
        qb::initialiser<"init">(&NSObject::setUp),
        qb::initialiser<"new">(&NSObject::setUp),
        qb::method<"self">(&NSObject::self),
        qb::method<"class">(&NSObject::classObject),
        qb::method<"superclass">(&NSObject::superclass),
        qb::method<"isKindOfClass:">(&NSObject::isKindOfClass),
        qb::method<"isMemberOfClass:">(&NSObject::isMemberOfClass),
        qb::method<"respondsToSelector:">(&NSObject::respondsToSelector),
        qb::method<"conformsToProtocol:">(&NSObject::conformsToProtocol),
        qb::method<"methodForSelector:">(&NSObject::methodForSelector),
        qb::method<"retain">(&NSObject::retain),
        qb::method<"release">(&NSObject::release),
        qb::method<"autorelease">(&NSObject::autorelease),
        qb::method<"retainCount">(&NSObject::retainCount),
        qb::method<"isEqual:">(&NSObject::isEqual),
        qb::method<"hash">(&NSObject::hash),
        qb::method<"copy">(&NSObject::copy),
        qb::method<"mutableCopy">(&NSObject::mutableCopy),
        qb::method<"copyWithZone:">(&NSObject::copyWithZone),
        qb::method<"mutableCopyWithZone:">(&NSObject::mutableCopyWithZone),
        qb::method<"makeMutable">(&NSObject::makeMutable),
        qb::method<"performSelector:", id(SEL)>(&NSObject::performSelector),
        qb::method<"performSelector:withObject:", id(SEL, id)>(&NSObject::performSelector),
        qb::method<"performSelector:withObject:withObject:", id(SEL, id, id)>(&NSObject::performSelector),
        qb::method<"forwardInvocation:">(&NSObject::forwardInvocation),
        qb::method<"doesNotRecognizeSelector:">(&NSObject::doesNotRecognizeSelector),
        qb::method<"subclassResponsibility:">(&NSObject::subclassResponsibility),
        qb::method<"isNil">(&NSObject::isNil),
        qb::method<"isNotNil">(&NSObject::isNotNil),
        qb::method<"containsData">(&NSObject::containsData),
        qb::method<"description">(&NSObject::description),
        qb::method<"descriptionWithLocale:">(&NSObject::descriptionWithLocale),
        qb::method<"stringValue">(&NSObject::stringValue),
        qb::method<"cStringValue">(&NSObject::cStringValue),
        qb::method<"asData">(&NSObject::asData),
        qb::method<"isIsoDateTimeString">(&NSObject::isIsoDateTimeString),
        qb::method<"standardizedISODateTimeString">(&NSObject::standardizedISODateTimeString),
    };
    static Class *const self = new Class(
        "NSObject", nullptr,
        {methods, qb::tables::objectEnumeratorCompatibility(), qb::tables::objectKeyAccess(),
         qb::tables::objectDeepAccess(), qb::tables::objectOutputStreaming(), qb::tables::objectPhpString()},
        qb::construct<NSObject>, {"OutputStreaming", "PropertyListOutputStreaming"});
    return self;
}

Ref<NSObject> NSObject::init() {
    return Ref<NSObject>::adopt(new NSObject);
}

Class *NSObject::superclass() const {
    return classObject()->superclass();
}

BOOL NSObject::isKindOfClass(Class *other) const {
    return classObject()->isSubclassOfClass(other);
}

BOOL NSObject::isMemberOfClass(Class *other) const {
    return classObject() == other;
}

BOOL NSObject::respondsToSelector(SEL selector) const {
    return classObject()->instancesRespondToSelector(selector);
}

BOOL NSObject::conformsToProtocol(Protocol *protocol) const {
    return classObject()->conformsToProtocol(protocol);
}

const qb::Method *NSObject::methodForSelector(SEL selector) const {
    return classObject()->instanceMethodForSelector(selector);
}

BOOL NSObject::isEqual(id other) const {
    return other == this;
}

std::uint32_t NSObject::hash() const {
    const auto address = reinterpret_cast<std::uintptr_t>(this) / qb::kSizeStep;
    return static_cast<std::uint32_t>(address * 0x9E3779B1U);
}

NSComparisonResult NSObject::compare(id) const {
    throw InvalidArgumentException(placeOf(this, "compare: must have a receiver whose class has an order."));
}

Ref<NSObject> NSObject::copyWithZone(void *) const {
    throw InvalidUseOfMethodException(placeOf(this, "copyWithZone: is not for objects of this class."));
}

Ref<NSObject> NSObject::mutableCopyWithZone(void *) const {
    throw InvalidUseOfMethodException(
        placeOf(this, "mutableCopyWithZone: is not for objects of this class."));
}

id NSObject::makeMutable() const {
    static Protocol *const mutableCopying = Protocol::named("NSMutableCopying");
    return conformsToProtocol(mutableCopying) ? mutableCopy().autorelease() : self();
}

id NSObject::performSelector(SEL selector) {
    return send<id>(this, selector);
}

id NSObject::performSelector(SEL selector, id withObject) {
    return send<id>(this, selector, withObject);
}

id NSObject::performSelector(SEL selector, id withObject, id withObject2) {
    return send<id>(this, selector, withObject, withObject2);
}

void NSObject::forwardInvocation(NSInvocation *invocation) {
    doesNotRecognizeSelector(invocation ? invocation->selector() : nullptr);
}

void NSObject::doesNotRecognizeSelector(SEL selector) const {
    throw InvalidArgumentException(placeOf(this, selector ? selector->text() : "") +
                                   " must be an operation that the receiver has.");
}

void NSObject::subclassResponsibility(SEL selector) const {
    throw InvalidUseOfMethodException(placeOf(this, selector ? selector->text() : "") +
                                      " must be overridden by the subclass.");
}

BOOL NSObject::containsData() const {
    return YES;
}

NSString *NSObject::description() const {
    char address[2 + 2 * sizeof(void *) + 1];
    std::snprintf(address, sizeof address, "0x%08" PRIxPTR, reinterpret_cast<std::uintptr_t>(this));
    return NSString::stringWith("<" + placeOf(this, address) + ">");
}

NSString *NSObject::descriptionWithLocale(NSDictionary *) const {
    return description();
}

NSString *NSObject::stringValue() const {
    return description();
}

const char *NSObject::cStringValue() const {
    NSString *const text = stringValue();
    return text ? text->cString() : nullptr;
}

NSData *NSObject::asData() const {
    NSString *const text = stringValue();
    return text ? NSData::dataWith(std::as_bytes(std::span(text->view()))) : nullptr;
}

NSNumber *NSObject::asNumber() const {
    return nullptr;
}

void NSObject::encodeWithCoder(NSCoder *) const {
    throw InvalidUseOfMethodException(placeOf(this, "encodeWithCoder: is not for objects of this class."));
}

BOOL NSObject::setUpWithCoder(NSCoder *) {
    throw InvalidUseOfMethodException(placeOf(this, "initWithCoder: is not for objects of this class."));
}

std::ostream &operator<<(std::ostream &stream, const NSObject &object) {
    NSString *const text = object.description();
    return stream << (text ? text->view() : std::string_view("(null)"));
}
