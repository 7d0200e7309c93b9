// The enumerators of the collections.
#ifndef QBFOUNDATION_FOUNDATION_COLLECTIONENUMERATOR_H
#define QBFOUNDATION_FOUNDATION_COLLECTIONENUMERATOR_H

#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Runtime/Ref.h>

#include <utility>

namespace qb {

/// Goes over what a collection's own iterator yields; `pick` makes the object of a step.
///
/// The end is looked for before the iterator moves on, so that a collection that changes behind its last
/// element is no error.
template <class Collection, auto pick>
class CollectionEnumerator final : public NSEnumerator {
public:
    explicit CollectionEnumerator(Collection *collection)
        : collection_(collection), next_(collection->begin()) {}

    id nextObject() override {
        if (!hasBegun_)
            next_ = collection_->begin();
        else if (next_ != collection_->end())
            ++next_;
        hasBegun_ = true;
        return next_ != collection_->end() ? pick(*next_) : nullptr;
    }

private:
    Ref<Collection> collection_;
    decltype(std::declval<Collection>().begin()) next_;
    bool hasBegun_ = false;
};

/// Returns an enumerator, autoreleased.
template <class Collection, auto pick>
NSEnumerator *enumeratorOf(const Collection *collection) {
    return Ref<NSEnumerator>::adopt(
               new CollectionEnumerator<Collection, pick>(const_cast<Collection *>(collection)))
        .autorelease();
}

} // namespace qb

#endif
