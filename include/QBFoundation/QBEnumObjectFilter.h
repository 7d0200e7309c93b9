// Filters that send their messages to one object, about each object of another enumerator.
#ifndef QBFOUNDATION_QBENUMOBJECTFILTER_H
#define QBFOUNDATION_QBENUMOBJECTFILTER_H

#include <QBFoundation/QBEnumFilter.h>

/// Sends its target a message with each object of its source as the first value, and yields the objects that
/// are the answers. The filter's arguments follow the object. Without a target, as with one that has no such
/// operation, nothing is yielded.
class QB_EXPORT QBEnumObjectFilter : public qb::FilterMakers<QBEnumObjectFilter, QBEnumFilter> {
public:
    QBEnumObjectFilter() noexcept : QBEnumObjectFilter(Yields::answers) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a filter without a source, autoreleased. It keeps the target, but not the argument.
    static QBEnumObjectFilter *filterWithObjectMessage(id target, SEL message, id argument = nullptr) {
        return initWithTarget(target, message, argument).autorelease();
    }
    static Ref<QBEnumObjectFilter> initWithTarget(id target, SEL message, id argument) {
        return qb::init<QBEnumObjectFilter>(&QBEnumObjectFilter::setUpWithTarget, target, message, argument);
    }

    virtual id filterTarget() const { return target(); }
    /// Changes the target from the next object on.
    virtual void setFilterTarget(id target);
    /// Stores the target alone, retained.
    virtual void _setFilterTarget(id target) { setTarget(target); }

    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<QBEnumObjectFilter> copy() const;

protected:
    explicit QBEnumObjectFilter(Yields yields) noexcept;

    /// The initialiser `initWithTarget:message:argument:`.
    virtual BOOL setUpWithTarget(id target, SEL message, id argument);
};

namespace qb {

/// The makers of `QBEnumObjectFilter`, typed for a class of filters. `Base`: its superclass.
template <class Filter, class Base>
class ObjectFilterMakers : public FilterMakers<Filter, Base> {
public:
    static Filter *filterWithObjectMessage(id target, SEL message, id argument = nullptr) {
        return initWithTarget(target, message, argument).autorelease();
    }
    static Ref<Filter> initWithTarget(id target, SEL message, id argument) {
        return qb::init<Filter>(&ObjectFilterMakers::setUpWithTarget, target, message, argument);
    }

protected:
    using FilterMakers<Filter, Base>::FilterMakers;
};

} // namespace qb

/// Yields the objects for which the target's answer is neither 0 nor nil. Only the first argument follows the
/// object, as with the other filters that yield the objects themselves.
class QB_EXPORT QBEnumObjectSelectFilter
    : public qb::ObjectFilterMakers<QBEnumObjectSelectFilter, QBEnumObjectFilter> {
public:
    QBEnumObjectSelectFilter() noexcept : ObjectFilterMakers(Yields::forTrue) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }
};

/// Yields the objects for which the target's answer is 0 or nil.
class QB_EXPORT QBEnumObjectRejectFilter
    : public qb::ObjectFilterMakers<QBEnumObjectRejectFilter, QBEnumObjectFilter> {
public:
    QBEnumObjectRejectFilter() noexcept : ObjectFilterMakers(Yields::forFalse) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Whether no object is yielded any more. The source is used up to the first one that is.
    virtual BOOL ok() { return nextObject() == nullptr; }

protected:
    explicit QBEnumObjectRejectFilter(Yields yields) noexcept : ObjectFilterMakers(yields) {}
};

/// Yields the objects after whose message an error is pending, all of them when the target has no such
/// operation. The pending error stays, as with `QBEnumRejectOnErrorFilter`.
class QB_EXPORT QBEnumObjectRejectOnErrorFilter
    : public qb::ObjectFilterMakers<QBEnumObjectRejectOnErrorFilter, QBEnumObjectRejectFilter> {
public:
    QBEnumObjectRejectOnErrorFilter() noexcept : ObjectFilterMakers(Yields::forError) {}

    static Class *cls();
    Class *classObject() const override { return cls(); }
};

#endif
