// The enumerators of the collections.
#ifndef QBFOUNDATION_FOUNDATION_COLLECTIONENUMERATOR_H
#define QBFOUNDATION_FOUNDATION_COLLECTIONENUMERATOR_H

#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Runtime/Ref.h>

#include <utility>

namespace qb {

/// Goes over what a collection's own iterator yields; `pick` makes the object of a step.
///
/// A collection that changes after nil was returned is no error.
template <class Collection, auto pick>
class CollectionEnumerator final : public NSEnumerator {
public:
    explicit CollectionEnumerator(Collection *collection)
        : collection_(collection), next_(collection->begin()) {}

    id nextObject() override {
        if (isAtEnd_)
            return nullptr;
        if (!hasBegun_)
            next_ = collection_->begin();
        else
            ++next_;
        hasBegun_ = true;
        isAtEnd_ = next_ == collection_->end();
        return isAtEnd_ ? nullptr : pick(*next_);
    }

private:
    Ref<Collection> collection_;
    decltype(std::declval<Collection>().begin()) next_;
    bool hasBegun_ = false, isAtEnd_ = false;
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
