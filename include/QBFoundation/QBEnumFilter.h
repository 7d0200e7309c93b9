// Enumerators that send each object of another one a message and yield what its answer says.
#ifndef QBFOUNDATION_QBENUMFILTER_H
#define QBFOUNDATION_QBENUMFILTER_H

#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Runtime/Ref.h>
#include <QBFoundation/Runtime/RepeatedMessage.h>
#include <QBFoundation/Runtime/Selector.h>

#include <cstdint>
#include <span>

namespace qb {
class Kept;
}

/// Sends each object of its source a message and yields the objects that are the answers; other answers and
/// nil are dropped. Subclasses yield the objects themselves, depending on the answer.
///
/// The message carries as many of the two arguments as the operation takes. An object that has no such
/// operation, or one that wants more or other kinds of values, is dropped. The source is asked only when an
/// object is wanted, and asked again after its end. Filters stand behind each other in any number.
class QB_EXPORT QBEnumFilter : public NSEnumerator {
public:
    QBEnumFilter() noexcept;
    ~QBEnumFilter() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns a filter without a source, autoreleased (selectors `filterWithMessage:` and its longer forms).
    /// The arguments are not retained: the caller keeps them as long as the filter is used.
    static QBEnumFilter *filterWithMessageOfClass(SEL message, id argument = nullptr,
                                                  id argument2 = nullptr) {
        return initWithMessage(message, argument, argument2).autorelease();
    }
    static Ref<QBEnumFilter> initWithMessage(SEL message, id argument, id argument2) {
        return qb::init<QBEnumFilter>(&QBEnumFilter::setUpWithMessage, message, argument, argument2);
    }
    /// A filter with the message `isEqual:` and `object`.
    static QBEnumFilter *equalFilter(id object) { return filterWithMessageOfClass("isEqual:"_sel, object); }
    /// A filter with the message `isCaseEqualTo:` and `object`.
    static QBEnumFilter *caseEqualFilter(id object) {
        return filterWithMessageOfClass("isCaseEqualTo:"_sel, object);
    }
    /// A filter with the message `isNotNil`.
    static QBEnumFilter *notNilFilter() { return filterWithMessageOfClass("isNotNil"_sel); }

    // --- Settings ---

    /// Returns what the objects come from; nil when there is none.
    virtual id source() const { return source_.get(); }
    /// Makes `source` what the objects come from, from the next one on. An object that is no enumerator is
    /// one that yields itself, in a `OneShotEnumerator`.
    virtual void setSource(id source);
    /// Stores an enumerator, retained; the old one is autoreleased.
    virtual void _setSource(id source);

    virtual SEL filterMsg() const { return message_.selector(); }
    /// Changes the message from the next object on.
    virtual void setFilterMsg(SEL message);
    /// Stores the message alone: the operation found for the class of the last object still serves it.
    virtual void _setFilterMsg(SEL message) { message_.setSelector(message); }

    virtual id argument1() const { return argument1_; }
    virtual id argument2() const { return argument2_; }
    virtual void setArgument1(id argument) { argument1_ = argument; }
    virtual void setArgument2(id argument) { argument2_ = argument; }

    /// Makes the filter look the operation up anew.
    virtual void invalidateCaches() { message_.forget(); }

    // --- Enumeration ---

    /// Throws what the source and the messages throw; the next call goes on behind that object. Throws
    /// InvalidUseOfMethodException when the filter is its own source, directly or through others, and when
    /// more than `kDeepestNesting` enumerators ask each other: filters of classes of a client, and other
    /// enumerators that have a filter inside.
    id nextObject() override;
    NSArray *allObjects() override;
    /// Does the filter's step: sends the message on behalf of `object` and returns what is yielded for it;
    /// nil when it is dropped. Subclasses override it.
    virtual id doFilter(id object);

    /// Returns a filter of the same class with the same message, arguments and source.
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<QBEnumFilter> copy() const;

    static constexpr unsigned kDeepestNesting = 256;

protected:
    /// For which answer an object is yielded; `answers`: never itself, but the answer.
    enum class Yields : std::uint8_t { answers, forTrue, forFalse, forError };

    /// Who gets the message: the object, or a target whose first value then is the object.
    enum class SendsTo : std::uint8_t { object, target };

    explicit QBEnumFilter(Yields yields, SendsTo sendsTo = SendsTo::object) noexcept;

    /// The initialiser `initWithMessage:argument:argument:`.
    virtual BOOL setUpWithMessage(SEL message, id argument, id argument2);

    id target() const { return target_.get(); }
    void setTarget(id target) { target_ = target; }

private:
    class Chain;

    static qb::RepeatedMessage::Wanted wantedFor(Yields yields, SendsTo sendsTo);
    bool step(qb::Kept &object);
    id stepSlowly(id object);
    id sendFor(id object, id receiver, std::span<const id> values);
    bool passes(bool isTrue) const;
    bool pull(Ref<Chain> &chain, id &result);
    const Ref<Chain> &currentChain();

    Ref<NSObject> source_;
    qb::RepeatedMessage message_;
    id argument1_ = nullptr;
    id argument2_ = nullptr;
    Ref<NSObject> target_;
    Ref<Chain> chain_; // null until an object is wanted
    const Yields yields_;
    const SendsTo sendsTo_;
    bool isInChain_ = false; // some filter's: it must hear of a new source
};

namespace qb {

/// The makers of `QBEnumFilter`, typed for a class of filters. `Base`: its superclass.
template <class Filter, class Base>
class FilterMakers : public Base {
public:
    static Filter *filterWithMessageOfClass(SEL message, id argument = nullptr, id argument2 = nullptr) {
        return initWithMessage(message, argument, argument2).autorelease();
    }
    static Ref<Filter> initWithMessage(SEL message, id argument, id argument2) {
        return qb::init<Filter>(&FilterMakers::setUpWithMessage, message, argument, argument2);
    }
    static Filter *equalFilter(id object) { return filterWithMessageOfClass("isEqual:"_sel, object); }
    static Filter *caseEqualFilter(id object) {
        return filterWithMessageOfClass("isCaseEqualTo:"_sel, object);
    }
    static Filter *notNilFilter() { return filterWithMessageOfClass("isNotNil"_sel); }

protected:
    using Base::Base;
};

} // namespace qb

/// Yields the objects whose answer is neither 0 nor nil.
class QB_EXPORT QBEnumSelectFilter : public qb::FilterMakers<QBEnumSelectFilter, QBEnumFilter> {
public:
    QBEnumSelectFilter() noexcept : FilterMakers(Yields::forTrue) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }
};

/// Yields the objects whose answer is 0 or nil.
class QB_EXPORT QBEnumRejectFilter : public qb::FilterMakers<QBEnumRejectFilter, QBEnumFilter> {
public:
    QBEnumRejectFilter() noexcept : FilterMakers(Yields::forFalse) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Whether no object is yielded any more. The source is used up to the first one that is.
    virtual BOOL ok() { return nextObject() == nullptr; }

protected:
    explicit QBEnumRejectFilter(Yields yields) noexcept : FilterMakers(yields) {}
};

/// Yields the objects after whose message an error is pending, and those that have no such operation. The
/// pending error stays, so that later objects are yielded too unless their message clears it.
class QB_EXPORT QBEnumRejectOnErrorFilter
    : public qb::FilterMakers<QBEnumRejectOnErrorFilter, QBEnumRejectFilter> {
public:
    QBEnumRejectOnErrorFilter() noexcept : FilterMakers(Yields::forError) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }
};

/// Yields the objects whose answer is neither 0 nor nil, as `QBEnumSelectFilter` does, for `ok` to say
/// whether there are none.
class QB_EXPORT QBEnumRejectOnFalseFilter
    : public qb::FilterMakers<QBEnumRejectOnFalseFilter, QBEnumRejectFilter> {
public:
    QBEnumRejectOnFalseFilter() noexcept : FilterMakers(Yields::forTrue) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }
};

#endif
