// How filters that stand behind each other are gone through.
#include <QBFoundation/QBEnumFilter.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBEnumObjectFilter.h>
#include <QBFoundation/QBErrorHandler.h>

#include "Foundation/ArrayEnumerator.h"
#include "Foundation/Kept.h"
#include "Runtime/RepeatedMessage.Calls.h"

#include <algorithm>
#include <bit>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

// So many objects go through a filter before the answers that were dropped are given back.
constexpr unsigned kPulledInAPool = 1024;

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

// --- Steps ---

inline bool QBEnumFilter::passes(bool isTrue) const {
    return isTrue == (yields_ != Yields::forFalse);
}

// Returns whether anything is yielded; keeps it then. In each loop's own code, because here a call costs as
// much as the work.
[[gnu::always_inline]] inline bool QBEnumFilter::step(qb::Kept &object) {
    const bool isPlain = message_.isPlainFor(object.get());
    if (isPlain && yields_ != Yields::answers)
        return passes(message_.isPlainTrue(object.get()));
    const id yielded = isPlain ? message_.plainObject(object.get()) : stepSlowly(object.get());
    if (!yielded)
        return false;
    object.change(yielded);
    return true;
}

id QBEnumFilter::stepSlowly(id object) {
    if (sendsTo_ == SendsTo::object) {
        const id values[] = {argument1_, argument2_};
        return sendFor(object, object, values);
    }
    const qb::Kept receiver(target_.get()); // and what it answers, whatever its operation does to the filter
    const id values[] = {object, argument1_, argument2_};
    return sendFor(object, receiver.get(), std::span(values).first(yields_ == Yields::answers ? 3 : 2));
}

id QBEnumFilter::sendFor(id object, id receiver, std::span<const id> values) {
    if (!message_.reaches(receiver, values))
        return yields_ == Yields::forError ? object : nullptr;
    if (yields_ == Yields::answers)
        return message_.object(receiver, values.data());
    const bool isTrue = message_.isTrue(receiver, values.data());
    return passes(yields_ == Yields::forError ? qb::isErrorPending() : isTrue) ? object : nullptr;
}

id QBEnumFilter::doFilter(id object) {
    if (!object)
        return nullptr;
    qb::Kept kept(object);
    return step(kept) ? kept.get() : nullptr;
}

// --- Chains ---

/// What the objects of a filter come through: filters of the library, whose steps are done one after the
/// other without a call of `nextObject`, so that their number meets no end of the stack; and what the first
/// of them has as its source. No filter has one that is out of date: it would keep what nobody else does.
class QBEnumFilter::Chain final : public NSObject {
public:
    explicit Chain(QBEnumFilter *last) : last_(last), lastIsOfLibrary_(isFilterOfLibrary(*last)) {
        collectFilters(last);
        steps_.assign(filters_.rbegin(), filters_.rend());
        if (lastIsOfLibrary_)
            steps_.push_back(last);
        if (NSObject *const origin = origin_; origin && typeid(*origin) == typeid(qb::ArrayEnumerator))
            array_ = static_cast<qb::ArrayEnumerator *>(origin);
        if (next_)
            next_->place_ = &next_;
        newest_ = this;
    }
    ~Chain() override { leaveList(); }

    /// For a filter that is gone, or has another chain soon; the chain itself may be freed later.
    void leaveList() {
        if (!place_)
            return;
        *place_ = next_;
        if (next_)
            next_->place_ = place_;
        place_ = nullptr;
    }

    /// Takes the chains of all filters away; who goes through one just now keeps it until then.
    static void dropAll() {
        while (Chain *const chain = newest_) {
            chain->leaveList();
            const Ref<Chain> dropped = std::exchange(chain->last_->chain_, nullptr);
        }
    }

    /// Returns the next object that comes in at the first filter; nil at the end.
    [[gnu::always_inline]] id nextOfOrigin() const {
        if (array_)
            return array_->nextObject();
        if (!origin_)
            return nullptr;
        const Nesting counted;
        return origin_->nextObject();
    }

    /// Lets `object` through the filters. Returns nil when one of them has dropped it.
    [[gnu::always_inline]] id pass(id object, QBEnumFilter *last) const {
        qb::Kept kept(object);
        for (QBEnumFilter *filter : steps_) {
            if (!filter->step(kept))
                return nullptr;
        }
        return lastIsOfLibrary_ ? kept.get() : last->doFilter(kept.get());
    }

private:
    // A circle comes back to the filter at a power of two (R. P. Brent, "An improved Monte Carlo
    // factorization algorithm", 1980).
    void collectFilters(QBEnumFilter *last) {
        last->isInChain_ = true;
        const QBEnumFilter *mark = last;
        id source = last->source_;
        while (source && isFilterOfLibrary(*source)) {
            auto *const filter = static_cast<QBEnumFilter *>(source);
            if (filter == mark)
                throw InvalidUseOfMethodException(
                    "QBEnumFilter nextObject must have a source that does not lead back to the filter.");
            filter->isInChain_ = true;
            filters_.emplace_back(filter);
            if (std::has_single_bit(filters_.size()))
                mark = filter;
            source = filter->source_;
        }
        origin_ = source;
    }

    std::vector<Ref<QBEnumFilter>> filters_; // before the last one, which owns the chain, from there on
    std::vector<QBEnumFilter *> steps_; // the same in their order, and the last one if it is of the library
    Ref<NSObject> origin_;
    qb::ArrayEnumerator *array_ = nullptr; // the origin, when it is one
    QBEnumFilter *const last_;             // which has the chain as long as that is in the list of all
    const bool lastIsOfLibrary_;

    static inline constinit Chain *newest_ = nullptr;
    Chain *next_ = newest_;    // an older one
    Chain **place_ = &newest_; // where the list leads here; null: not in it any more
};

const Ref<QBEnumFilter::Chain> &QBEnumFilter::currentChain() {
    if (!chain_)
        chain_ = Ref<Chain>::adopt(new Chain(this));
    return chain_;
}

void QBEnumFilter::_setSource(id source) {
    if (source_.get() == source)
        return;
    Ref<NSObject>(source_).autorelease(); // may throw, with nothing changed
    source_ = source;
    if (isInChain_)
        Chain::dropAll();
}

// --- Enumeration ---

// Takes one object of the origin. Returns false at the end; else `result` is what comes out for the object,
// or nil.
[[gnu::always_inline]] inline bool QBEnumFilter::pull(Ref<Chain> &chain, id &result) {
    if (!chain_ || chain != chain_)
        chain = currentChain();
    const id object = chain->nextOfOrigin();
    result = object ? chain->pass(object, this) : nullptr;
    return object != nullptr;
}

id QBEnumFilter::nextObject() {
    const Ref<QBEnumFilter> kept(this); // a message may let go of the filter, or change its chain
    Ref<Chain> chain = chain_;
    id result;
    while (pull(chain, result) && !result) {
    }
    return result;
}

NSArray *QBEnumFilter::allObjects() {
    if (!isFilterOfLibrary(*this))
        return NSEnumerator::allObjects();
    NSMutableArray *const objects = NSMutableArray::array();
    const Ref<QBEnumFilter> kept(this);
    Ref<Chain> chain = chain_;
    for (;;) {
        const NSAutoreleasePool pool;
        for (unsigned i = 0; i < kPulledInAPool; ++i) {
            id result;
            if (!pull(chain, result))
                return objects;
            if (result)
                objects->addObject(result);
        }
    }
}

// --- Construction ---

QBEnumFilter::QBEnumFilter() noexcept : QBEnumFilter(Yields::answers) {}

QBEnumFilter::QBEnumFilter(Yields yields, SendsTo sendsTo) noexcept
    : message_(wantedFor(yields, sendsTo)), yields_(yields), sendsTo_(sendsTo) {}

QBEnumFilter::~QBEnumFilter() {
    if (chain_)
        chain_->leaveList();
}

// An error says more than any answer, and a target wants to be told the object.
qb::RepeatedMessage::Wanted QBEnumFilter::wantedFor(Yields yields, SendsTo sendsTo) {
    using Wanted = qb::RepeatedMessage::Wanted;
    if (sendsTo == SendsTo::target || yields == Yields::forError)
        return Wanted::anything;
    return yields == Yields::answers ? Wanted::object : Wanted::boolean;
}
