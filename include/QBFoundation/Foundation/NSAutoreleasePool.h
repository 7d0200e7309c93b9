// Pools: references that are given back later.
#ifndef QBFOUNDATION_FOUNDATION_NSAUTORELEASEPOOL_H
#define QBFOUNDATION_FOUNDATION_NSAUTORELEASEPOOL_H

#include <QBFoundation/Foundation/NSObject.h>

#include <cstdint>

class NSMutableSet;

/// A scope for autoreleased objects: its end gives back each reference that was handed to it.
///
/// Pools form a stack, the newest is the default one. One that ends before those inside it just leaves the
/// stack. There is always an outermost pool, made on first use and kept. The pool's objects stand in a chain
/// of pages, in the order in which they came.
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

    // --- QBAutoreleasePoolAdditions ---

    /// How many objects wait in the pool; one that was handed to it twice counts twice.
    std::uint32_t objectCount() const;
    /// How many of them have two references or more.
    std::uint32_t objectCountMultipleRetained() const;
    /// Writes both counts to standard error, as all that show something do.
    void showPoolStatistics() const;
    /// Writes the address and the retain count of each object.
    void showDescription() const;
    /// Returns the class of each object, a line each. From `debug` 12 on each object is traced on the channel
    /// `misc`.
    NSString *description() const override;
    /// Returns the addresses that `showNewEntries` has seen in the process, as numbers. Every call but the
    /// first ends the time in which nothing is told about them.
    NSMutableSet *addresses() const;
    /// Writes address, class, retain count and description of each object that has come since the last call,
    /// in whatever pool; the first call of the process only remembers them.
    void showNewEntries() const;
    /// Does `showNewEntries` on the default pool and all around it.
    static void showNewEntriesOfClass();
    /// Writes the counts of the default pool and all around it, and their sums.
    static void showAllPoolStatistics();
    /// Does `showDescription` on the default pool.
    static void pool1Special();

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
