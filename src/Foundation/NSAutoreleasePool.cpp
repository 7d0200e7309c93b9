#include <QBFoundation/Foundation/NSAutoreleasePool.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSAutoreleasePool.Tables.h"
#include "Foundation/Required.h"
#include "System/Memory.h"

#include <new>
#include <utility>

namespace {

constinit NSAutoreleasePool *newestPool = nullptr;
constinit NSAutoreleasePool::Page *sparePage =
    nullptr; // of the last pool that ended; most pools need one page

// Where there is no memory for another: an object that finds no place is destroyed, with what it has begun.
constinit NSAutoreleasePool::Page pageInNeed{};
constinit NSAutoreleasePool::Page *lastPage = &pageInNeed;

} // namespace

Class *NSAutoreleasePool::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"defaultPool">(&NSAutoreleasePool::defaultPool),
        qb::method<"parent">(&NSAutoreleasePool::parent),
        qb::method<"addObject:">(&NSAutoreleasePool::addObject),
        qb::method<"drain">(&NSAutoreleasePool::drain),
    };
    static Class *const self =
        new Class("NSAutoreleasePool", NSObject::cls(), {methods, qb::tables::autoreleasePoolAdditions()});
    return self;
}

NSAutoreleasePool::NSAutoreleasePool() : parent_(defaultPool()) {
    makeImmortal();
    newestPool = this;
}

NSAutoreleasePool::NSAutoreleasePool(Outermost) {
    makeImmortal();
}

NSAutoreleasePool::~NSAutoreleasePool() {
    drain();
    if (newestPool == this) [[likely]] {
        newestPool = parent_;
        return;
    }
    // Pools that don't belong to a scope may end in any order.
    NSAutoreleasePool *inner = newestPool;
    while (inner->parent_ != this)
        inner = inner->parent_;
    inner->parent_ = parent_;
}

NSAutoreleasePool *NSAutoreleasePool::defaultPool() {
    if (!newestPool) [[unlikely]]
        newestPool = new NSAutoreleasePool(Outermost());
    return newestPool;
}

void NSAutoreleasePool::addPage() {
    Page *page = std::exchange(sparePage, nullptr);
    if (!page)
        page = static_cast<Page *>(qb::sys::allocate(sizeof(Page)));
    if (!page)
        page = std::exchange(lastPage, nullptr);
    if (!page)
        throw std::bad_alloc();
    page->count = 0;
    page->next = nullptr;
    (newest_ ? newest_->next : oldest_) = page;
    newest_ = page;
}

void NSAutoreleasePool::addObject(id object) {
    qb::required(object, "NSAutoreleasePool addObject:", "an object");
    if (!newest_ || newest_->count == Page::kCapacity) [[unlikely]] {
        Ref<NSObject> owned = Ref<NSObject>::adopt(object); // until there is a place for it
        addPage();
        static_cast<void>(owned.detach());
    }
    newest_->objects[newest_->count++] = object;
}

// Stands here so that the way into the pool is no call.
id NSObject::autorelease() {
    NSAutoreleasePool::defaultPool()->addObject(this);
    return this;
}

void NSAutoreleasePool::drain() noexcept {
    // Objects that are destroyed may hand others to the pool, so it is done only when it stays empty.
    while (oldest_) {
        Page *page = std::exchange(oldest_, nullptr);
        newest_ = nullptr;
        while (page) {
            for (std::uint32_t i = 0; i < page->count; ++i)
                page->objects[i]->release();
            Page *const done = std::exchange(page, page->next);
            if (done == &pageInNeed)
                lastPage = done;
            else if (sparePage)
                qb::sys::release(done);
            else
                sparePage = done;
        }
    }
}
