// Going over the elements of a collection.
#ifndef QBFOUNDATION_FOUNDATION_NSENUMERATOR_H
#define QBFOUNDATION_FOUNDATION_NSENUMERATOR_H

#include <QBFoundation/Foundation/NSObject.h>

class NSArray;
class QBEnumFilter;

/// Yields objects one after the other, then nil for ever. Subclasses override `nextObject`.
///
/// The enumerators of collections retain their collection. Until it has returned nil, `nextObject` of them
/// throws InvalidUseOfMethodException when objects or keys came to the collection or left it, or an array was
/// sorted, since its first call. Another object in the place of one is no such change: `nextObject` returns
/// what stands there then.
class QB_EXPORT NSEnumerator : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    id nextObject() override = 0;

    /// Returns the objects that are left, autoreleased, never nil.
    virtual NSArray *allObjects();

    void writeOnOutputStream(QBOutputStream *stream) override;

    // --- Filtering ---

    /// Returns the class of the filters that the next two make: `QBEnumFilter`. A subclass that wants another
    /// one has a class operation `filterClass` of its own in its table.
    static Class *filterClass();
    /// Returns a filter of the receiver's `filterClass` whose source is the receiver, autoreleased.
    virtual QBEnumFilter *filterWithMessage(SEL message);
    virtual QBEnumFilter *filterWithMessage(SEL message, id argument);

    /// Range-for over what is left.
    class Iterator {
    public:
        explicit Iterator(NSEnumerator *source)
            : source_(source), current_(source ? source->nextObject() : nullptr) {}
        id operator*() const { return current_; }
        Iterator &operator++() {
            current_ = source_->nextObject();
            return *this;
        }
        bool operator!=(const Iterator &) const { return current_ != nullptr; }

    private:
        NSEnumerator *source_;
        id current_;
    };
    Iterator begin() { return Iterator(this); }
    Iterator end() { return Iterator(nullptr); }
};

#endif
