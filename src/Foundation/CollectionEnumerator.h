// The enumerators of the collections.
#ifndef QBFOUNDATION_FOUNDATION_COLLECTIONENUMERATOR_H
#define QBFOUNDATION_FOUNDATION_COLLECTIONENUMERATOR_H

#include <QBFoundation/Foundation/NSEnumerator.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>
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
        if (place_ == Place::within) [[likely]]
            ++next_;
        else if (place_ == Place::end)
            return nullptr;
        else
            begin();
        if (next_ != collection_->end()) [[likely]]
            return pick(*next_);
        place_ = Place::end;
        return nullptr;
    }

private:
    enum class Place : std::uint8_t { beginning, within, end };

    void begin() {
        next_ = collection_->begin();
        place_ = Place::within;
    }

    Ref<Collection> collection_;
    decltype(std::declval<Collection>().begin()) next_;
    Place place_ = Place::beginning;
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
