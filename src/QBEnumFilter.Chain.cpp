// How filters are gone through that stand behind each other.
#include <QBFoundation/QBEnumFilter.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBEnumObjectFilter.h>
#include <QBFoundation/QBErrorHandler.h>

#include "Runtime/RepeatedMessage.Calls.h"

#include <algorithm>
#include <bit>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

// The changes of sources by which chains can have become out of date.
constinit std::uint64_t sourceChanges = 0;

// Filters and other enumerators that are just asking each other.
constinit unsigned nesting = 0;

class Nesting {
public:
    Nesting() {
        if (nesting == QBEnumFilter::kDeepestNesting)
            throw InvalidUseOfMethodException("QBEnumFilter nextObject must not have more than " +
                                              std::to_string(nesting) + " enumerators that ask each other.");
        ++nesting;
    }
    ~Nesting() { --nesting; }
    Nesting(const Nesting &) = delete;
    Nesting &operator=(const Nesting &) = delete;
};

template <class... Filter>
bool isOneOf(const std::type_info &type) {
    return ((type == typeid(Filter)) || ...);
}

// Whether the object is a filter whose `nextObject` and `doFilter:` are those of the library.
bool isFilterOfLibrary(const NSObject &object) {
    return isOneOf<QBEnumFilter, QBEnumSelectFilter, QBEnumRejectFilter, QBEnumRejectOnErrorFilter,
                   QBEnumRejectOnFalseFilter, QBEnumObjectFilter, QBEnumObjectSelectFilter,
                   QBEnumObjectRejectFilter, QBEnumObjectRejectOnErrorFilter>(typeid(object));
}

} // namespace

/// What the objects of a filter come through: filters of the library, whose steps are done one after the
/// other without a call of `nextObject`, so that any number of them needs no stack; and what the first of
/// them has as its source.
class QBEnumFilter::Chain final : public NSObject {
public:
    explicit Chain(QBEnumFilter *last) : lastIsOfLibrary_(isFilterOfLibrary(*last)) {
        QBEnumFilter *filter = last;
        // A circle comes back to one of the filters at a power of two (R. P. Brent, "An improved Monte Carlo
        // factorization algorithm", 1980).
        const QBEnumFilter *mark = last;
        for (;;) {
            filter->isInChain_ = true;
            const id source = filter->source_;
            if (!source || !isFilterOfLibrary(*source)) {
                origin_ = source;
                break;
            }
            filter = static_cast<QBEnumFilter *>(source);
            if (filter == mark)
                throw InvalidUseOfMethodException(
                    "QBEnumFilter nextObject must have a source that does not lead back to the filter.");
            filters_.emplace_back(filter);
            if (std::has_single_bit(filters_.size()))
                mark = filter;
        }
        std::reverse(filters_.begin(), filters_.end());
    }

    bool isCurrent() const { return sourceChanges_ == sourceChanges; }

    /// Returns the next object that comes in at the first filter; nil at the end.
    id askOrigin() const {
        if (!origin_)
            return nullptr;
        const Nesting counted;
        return origin_->nextObject();
    }

    /// Lets `object` through the filters, the last one included; it is null when one has dropped it.
    void pass(Ref<NSObject> &object, QBEnumFilter *last) const {
        for (const Ref<QBEnumFilter> &filter : filters_) {
            replace(object, filter->step(object));
            if (!object)
                return;
        }
        replace(object, lastIsOfLibrary_ ? last->step(object) : last->doFilter(object));
    }

private:
    static void replace(Ref<NSObject> &object, id yielded) {
        if (yielded != object.get())
            object = yielded;
    }

    Ref<NSObject> origin_;
    std::vector<Ref<QBEnumFilter>> filters_; // the last one is not among them: it owns the chain
    std::uint64_t sourceChanges_ = sourceChanges;
    bool lastIsOfLibrary_;
};

QBEnumFilter::QBEnumFilter() noexcept : QBEnumFilter(Yields::answers) {}

QBEnumFilter::QBEnumFilter(Yields yields, SendsTo sendsTo) noexcept : yields_(yields), sendsTo_(sendsTo) {}

QBEnumFilter::~QBEnumFilter() = default;

void QBEnumFilter::_setSource(id source) {
    if (source_.get() == source)
        return;
    std::exchange(source_, source).autorelease();
    if (isInChain_)
        ++sourceChanges;
}

id QBEnumFilter::nextObject() {
    Ref<Chain> chain;
    for (;;) {
        if (!chain || !chain->isCurrent())
            chain = currentChain();
        // Held meanwhile, because a message may take it out of the collection that it is from.
        Ref<NSObject> object = chain->askOrigin();
        if (!object)
            return nullptr;
        chain->pass(object, this);
        if (object)
            return object->retainCount() == 1 ? object.autorelease() : object.get();
    }
}

const Ref<QBEnumFilter::Chain> &QBEnumFilter::currentChain() {
    if (!chain_ || !chain_->isCurrent())
        chain_ = Ref<Chain>::adopt(new Chain(this));
    return chain_;
}

id QBEnumFilter::step(id object) {
    if (sendsTo_ == SendsTo::object) {
        const id values[] = {argument1_, argument2_};
        return sendFor(object, object, values);
    }
    const Ref<NSObject> receiver = target_; // whatever its operation does to the filter
    const id values[] = {object, argument1_, argument2_};
    return sendFor(object, receiver, std::span(values).first(yields_ == Yields::answers ? 3 : 2));
}

id QBEnumFilter::sendFor(id object, id receiver, std::span<const id> values) {
    if (!message_.reaches(receiver, values))
        return yields_ == Yields::forError ? object : nullptr;
    switch (yields_) {
    case Yields::answers:
        return message_.object(receiver, values.data());
    case Yields::forTrue:
        return message_.isTrue(receiver, values.data()) ? object : nullptr;
    case Yields::forFalse:
        return message_.isTrue(receiver, values.data()) ? nullptr : object;
    case Yields::forError:
        message_.isTrue(receiver, values.data());
        return qb::isErrorPending() ? object : nullptr;
    }
    return nullptr;
}
