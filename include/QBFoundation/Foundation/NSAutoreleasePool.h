// Pools: references that are given back later.
#ifndef QBFOUNDATION_FOUNDATION_NSAUTORELEASEPOOL_H
#define QBFOUNDATION_FOUNDATION_NSAUTORELEASEPOOL_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

/// A scope for autoreleased objects: its end gives back each reference that was handed to it.
///
/// Pools form a stack, the newest is the default one. There is always an outermost pool, made on first use
/// and kept. The pool's objects stand in a chain of pages, in the order in which they came.
class QB_EXPORT NSAutoreleasePool final : public NSObject {
public:
    /// What a pool keeps its objects in: a page of memory.
    struct Page {
        static constexpr std::uint32_t kCapacity = (4096 - 2 * sizeof(void *)) / sizeof(void *);

        std::uint32_t count;
        Page *next; // the page filled after this one
        NSObject *objects[kCapacity];
    };

    NSAutoreleasePool();
    ~NSAutoreleasePool() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// The pool that gets what is autoreleased now, never null.
    static NSAutoreleasePool *defaultPool();
    /// The next outer pool; null for the outermost.
    NSAutoreleasePool *parent() const { return parent_; }

    /// Takes over a reference to `object`.
    void addObject(id object);
    /// Gives back all references now; the pool goes on.
    void drain() noexcept;

    /// Calls `visit` with each object, the first one first.
    template <class F>
    void forEachObject(F &&visit) const {
        for (const Page *page = oldest_; page; page = page->next)
            for (std::uint32_t i = 0; i < page->count; ++i)
                visit(page->objects[i]);
    }

private:
    struct Outermost {};
    explicit NSAutoreleasePool(Outermost);

    void addPage();

    Page *oldest_ = nullptr;
    Page *newest_ = nullptr;
    NSAutoreleasePool *parent_ = nullptr;
};

#endif
