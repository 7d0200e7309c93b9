// What waits in the pools, on standard error.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>

#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSAutoreleasePool.Tables.h"
#include "OSAdaptor/StandardError.h"
#include "Text/Utf8.h"

#include <cinttypes>
#include <string>
#include <string_view>

namespace {

constexpr const char *kFile = "src/QBAutoreleasePoolAdditions";

// A longer description is cut; what stays, a blank and three points are 99 characters.
constexpr std::uint32_t kLongestDescription = 100;
constexpr std::uint32_t kCutDescription = 95;

constexpr int kLeastDebugOfObjects = 12;

// While it is set, new addresses are remembered but not told.
bool isFirstSweep = true;

std::uintptr_t addressOf(const NSObject *object) {
    return reinterpret_cast<std::uintptr_t>(object);
}

std::string classDescriptionOf(const NSObject *object) {
    return std::string(object->classObject()->description()->view());
}

std::string shortDescriptionOf(const NSObject *object) {
    NSString *const description = object->description();
    if (!description)
        return "null";
    const std::string_view text = description->cString();
    if (qb::text::utf16Units(text.data(), text.size()) <= kLongestDescription)
        return std::string(text);
    const std::size_t kept = qb::text::byteOffsetOfUnit(text.data(), text.size(), kCutDescription);
    return std::string(text.substr(0, kept)) + " ...";
}

std::string countLine(const char *title, std::uint32_t count) {
    return qb::printed("%s: %lu\n", title, static_cast<unsigned long>(count));
}

} // namespace

std::span<const qb::Method> qb::tables::autoreleasePoolAdditions() {
    using Pool = NSAutoreleasePool;
    static const qb::Method methods[] = {
        qb::method<"objectCount">(&Pool::objectCount),
        qb::method<"objectCountMultipleRetained">(&Pool::objectCountMultipleRetained),
        qb::method<"showPoolStatistics">(&Pool::showPoolStatistics),
        qb::method<"showDescription">(&Pool::showDescription),
        qb::method<"addresses">(&Pool::addresses),
        qb::method<"showNewEntries">(&Pool::showNewEntries),
        qb::classMethod<"showNewEntries">(&Pool::showNewEntriesOfClass),
        qb::classMethod<"showAllPoolStatistics">(&Pool::showAllPoolStatistics),
        qb::classMethod<"pool1Special">(&Pool::pool1Special),
    };
    return methods;
}

std::uint32_t NSAutoreleasePool::objectCount() const {
    std::uint32_t count = 0;
    for (const Page *page = oldest_; page; page = page->next)
        count += page->count;
    return count;
}

std::uint32_t NSAutoreleasePool::objectCountMultipleRetained() const {
    std::uint32_t count = 0;
    forEachObject([&](const NSObject *object) { count += object->retainCount() >= 2; });
    return count;
}

void NSAutoreleasePool::showPoolStatistics() const {
    qb::writeStandardError(countLine("total count (retained)", objectCountMultipleRetained()) +
                           countLine("total count           ", objectCount()));
}

// The texts are made in a pool of their own, so that they don't count in the pool that is looked at.

void NSAutoreleasePool::showDescription() const {
    const NSAutoreleasePool own;
    std::string text = "pool description:\n";
    forEachObject([&](const NSObject *object) {
        text += qb::printed("  0x%08" PRIxPTR " (%" PRIu32 ")\n", addressOf(object), object->retainCount());
    });
    qb::writeStandardError(text);
}

NSString *NSAutoreleasePool::description() const {
    std::string text;
    {
        const NSAutoreleasePool own;
        forEachObject([&](const NSObject *object) {
            const std::string className = classDescriptionOf(object);
            text += "  " + className + "\n";
            if (debug >= kLeastDebugOfObjects)
                qb::trace(DEBUG_CHANNEL_MISC, {kFile, __LINE__, this, "description"}, "%s (%u): 0x%08x",
                          className.c_str(), object->retainCount(), static_cast<const void *>(object));
        });
    }
    return NSString::stringWith(text);
}

NSMutableSet *NSAutoreleasePool::addresses() const {
    static NSMutableSet *theAddresses = nullptr;
    if (theAddresses)
        isFirstSweep = false;
    else
        theAddresses = NSMutableSet::init().detach();
    return theAddresses;
}

void NSAutoreleasePool::showNewEntries() const {
    const NSAutoreleasePool own;
    NSMutableSet *const known = addresses();
    qb::writeStandardError("new in the pool:\n");
    forEachObject([&](const NSObject *object) {
        NSNumber *const address = NSNumber::numberWithUnsignedLongLong(addressOf(object));
        if (known->containsObject(address))
            return;
        if (!isFirstSweep)
            qb::writeStandardError(qb::printed("+ 0x%08" PRIxPTR " %s:%" PRIu32 ": '%s'\n", addressOf(object),
                                               classDescriptionOf(object).c_str(), object->retainCount(),
                                               shortDescriptionOf(object).c_str()));
        known->addObject(address);
    });
}

void NSAutoreleasePool::showNewEntriesOfClass() {
    for (NSAutoreleasePool *pool = defaultPool(); pool; pool = pool->parent())
        pool->showNewEntries();
}

void NSAutoreleasePool::showAllPoolStatistics() {
    qb::writeStandardError("global pool statistics:\n");
    std::uint32_t pools = 0;
    std::uint32_t retained = 0;
    std::uint32_t all = 0;
    for (NSAutoreleasePool *pool = defaultPool(); pool; pool = pool->parent()) {
        qb::writeStandardError(countLine("pool", ++pools));
        pool->showPoolStatistics();
        retained += pool->objectCountMultipleRetained();
        all += pool->objectCount();
    }
    qb::writeStandardError(countLine("autorelease pool count", pools) +
                           countLine("total global count (retained)", retained) +
                           countLine("total global count           ", all));
}

void NSAutoreleasePool::pool1Special() {
    defaultPool()->showDescription();
}
