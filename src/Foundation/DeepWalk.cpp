#include "Foundation/DeepWalk.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/Runtime/Class.h>

#include "Foundation/Kept.h"
#include "Foundation/PlainClasses.h"
#include "Text/Hash.h"

#include <algorithm>
#include <bit>
#include <map>
#include <utility>
#include <vector>

namespace qb {

namespace {

// So many walks may be inside each other, by way of subclasses' own `isEqual:`; each takes some 300 bytes of
// stack beside what the subclass needs.
constexpr unsigned kMostWalks = 32;

// So many pairs of containers are compared before a walk remembers them.
constexpr std::uint64_t kUsualPairs = 1 << 16;

constinit unsigned walks = 0;

// The kind of a container whose comparison is the library's own.
ContainerKind kindOfLibraryClass(Class *cls) {
    if (cls == NSArray::cls() || cls == NSMutableArray::cls())
        return ContainerKind::array;
    if (cls == NSDictionary::cls() || cls == NSMutableDictionary::cls())
        return ContainerKind::dictionary;
    if (cls == NSSet::cls() || cls == NSMutableSet::cls())
        return ContainerKind::set;
    return ContainerKind::none;
}

const HashTable &tableOf(id container, ContainerKind kind) {
    return kind == ContainerKind::set ? static_cast<NSSet *>(container)->table()
                                      : static_cast<NSDictionary *>(container)->table();
}

std::uint32_t countOf(id container, ContainerKind kind) {
    return kind == ContainerKind::array ? static_cast<NSArray *>(container)->count()
                                        : tableOf(container, kind).count();
}

class EqualityWalk {
public:
    EqualityWalk() { ++walks; }
    ~EqualityWalk() { --walks; }
    EqualityWalk(const EqualityWalk &) = delete;
    EqualityWalk &operator=(const EqualityWalk &) = delete;

    bool run(id a, id b) {
        Verdict verdict = open(a, b, containerKindOf(a));
        while (!open_.empty()) {
            verdict = goOn(open_.back(), verdict);
            if (verdict != Verdict::open) {
                remember(open_.back(), verdict);
                open_.pop_back();
            }
        }
        return verdict == Verdict::equal;
    }

private:
    // What is known of two values; `open`: they are containers, now the last ones in `open_`.
    enum class Verdict { equal, different, open };
    // What is compared next, or what the verdict that comes back is about.
    enum class Phase : std::uint8_t { element, key, value };

    // Two containers whose elements are being compared.
    struct Pair {
        Ref<NSObject> a, b; // kept, for a comparison may take them out of what holds them
        ContainerKind kind;
        Phase phase = Phase::element;
        std::uint32_t index = 0;     // of the element or entry of `a`
        std::uint32_t place = 0;     // where to look for the next candidate
        std::uint32_t candidate = 0; // the entry of `b` whose key may be equal
    };

    struct Known {
        Ref<NSObject> a, b; // kept, so that no other object takes their place
        Verdict verdict;
    };

    // Containers that several others hold may be met on ever so many ways, twice as many with each level of
    // such ones. Nothing is remembered of usual comparisons, which end before that matters.
    void remember(const Pair &pair, Verdict verdict) {
        constexpr std::uint32_t kOnce = 2; // by what holds it and by the pair
        if (++done_ > kUsualPairs && (pair.a->retainCount() > kOnce || pair.b->retainCount() > kOnce))
            known_.insert_or_assign({pair.a.get(), pair.b.get()}, Known{pair.a, pair.b, verdict});
    }

    Verdict compare(id a, id b) {
        if (a == b)
            return Verdict::equal;
        Class *const cls = a->classObject();
        ContainerKind kind = kindOfLibraryClass(cls);
        if (kind == ContainerKind::none && walks >= kMostWalks)
            kind = containerKindOf(a);
        if (kind == ContainerKind::none) {
            const Kept keptA(a), keptB(b); // whatever they do to what holds them
            return a->isEqual(b) ? Verdict::equal : Verdict::different;
        }
        return open(a, b, kind);
    }

    Verdict open(id a, id b, ContainerKind kind) {
        if (containerKindOf(b) != kind || countOf(a, kind) != countOf(b, kind))
            return Verdict::different;
        if (const auto known = known_.find({a, b}); known != known_.end())
            return known->second.verdict;
        // Containers that hold themselves come back to the same pairs. To meet one of them it is enough to
        // remember the pair at each power of two (R. P. Brent, "An improved Monte Carlo factorization
        // algorithm", 1980).
        if (!open_.empty()) {
            const Pair &earlier = open_[std::bit_floor(open_.size()) - 1];
            if (earlier.a.get() == a && earlier.b.get() == b)
                return Verdict::equal;
        }
        open_.push_back({a, b, kind});
        return Verdict::open;
    }

    Verdict goOn(Pair &pair, Verdict last) {
        return pair.kind == ContainerKind::array ? goOnInArray(pair, last) : goOnInTable(pair, last);
    }

    Verdict goOnInArray(Pair &pair, Verdict last) {
        const auto *const a = static_cast<NSArray *>(pair.a.get());
        const auto *const b = static_cast<NSArray *>(pair.b.get());
        if (last == Verdict::different)
            return last;
        // A comparison is code that may have changed the arrays.
        while (a->count() == b->count() && pair.index < a->count()) {
            const std::uint32_t index = pair.index++;
            const Verdict verdict = compare(a->view()[index], b->view()[index]);
            if (verdict != Verdict::equal)
                return verdict;
        }
        return a->count() == b->count() ? Verdict::equal : Verdict::different;
    }

    Verdict goOnInTable(Pair &pair, Verdict last) {
        const HashTable &a = tableOf(pair.a, pair.kind);
        const HashTable &b = tableOf(pair.b, pair.kind);
        for (;;) {
            if (pair.phase == Phase::value) {
                if (last == Verdict::different)
                    return last;
                ++pair.index;
                pair.phase = Phase::element;
            }
            while (a.entries() + pair.index < a.end() && !entryAt(a, pair.index).key)
                ++pair.index;
            if (a.entries() + pair.index >= a.end())
                return Verdict::equal;
            const bool isFound = pair.phase == Phase::key && last == Verdict::equal;
            if (const Verdict verdict = isFound ? last : findKey(pair, entryAt(a, pair.index).key, b);
                verdict != Verdict::equal)
                return verdict;
            pair.phase = Phase::value;
            last = compareValues(pair.kind, entryAt(a, pair.index), entryAt(b, pair.candidate));
            if (last != Verdict::equal)
                return last;
        }
    }

    // Looks for the entry of `b` whose key is equal. Keys that are containers are compared here one by one,
    // as the table would ask them for `isEqual:`, which begins a walk of its own.
    Verdict findKey(Pair &pair, id key, const HashTable &b) {
        if (containerKindOf(key) == ContainerKind::none) {
            const HashTable::Entry *const entry = b.find(key);
            pair.candidate = indexOf(entry, b);
            return entry ? Verdict::equal : Verdict::different;
        }
        const Ref<NSObject> kept = key;
        if (pair.phase == Phase::element)
            pair.place = 0;
        pair.phase = Phase::key;
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): keys are never nil
        while (const HashTable::Entry *const entry = b.nextWithHash(key->hash(), pair.place)) {
            pair.candidate = indexOf(entry, b);
            const Verdict verdict = compare(key, entry->key);
            if (verdict != Verdict::different)
                return verdict;
        }
        return Verdict::different;
    }

    Verdict compareValues(ContainerKind kind, const HashTable::Entry &a, const HashTable::Entry &b) {
        if (kind == ContainerKind::set)
            return Verdict::equal;
        return a.value && b.value ? compare(a.value, b.value) : Verdict::different;
    }

    static std::uint32_t indexOf(const HashTable::Entry *entry, const HashTable &table) {
        return entry ? static_cast<std::uint32_t>(entry - table.entries()) : 0;
    }

    // Returns the entry as it is now: a comparison is code that may have changed the table.
    static HashTable::Entry entryAt(const HashTable &table, std::uint32_t index) {
        return table.entries() + index < table.end() ? table.entries()[index]
                                                     : HashTable::Entry{nullptr, nullptr};
    }

    std::vector<Pair> open_; // the outermost first
    std::map<std::pair<id, id>, Known> known_;
    std::uint64_t done_ = 0; // pairs
};

// So many elements of the containers inside another one count for its hash, besides as many of its own. Those
// containers share them equally, level by level, so that they take a bounded time and little stack, however
// deep they are and however often they are met.
constexpr std::uint64_t kHashedInside = 4096;

// How many elements count of the container that is just asked for its hash by the one around it: its own and
// those inside it.
class Share {
public:
    Share(id container, std::uint64_t elements) : outer_(std::exchange(asked_, {container, elements})) {}
    ~Share() { asked_ = outer_; }
    Share(const Share &) = delete;
    Share &operator=(const Share &) = delete;

    // Returns that of a container with `count` elements, which may be an outermost one.
    static std::uint64_t of(id container, std::uint64_t count) {
        return asked_.container == container ? asked_.elements
                                             : std::min(count, kHashedInside) + kHashedInside;
    }

private:
    struct Asked {
        id container;
        std::uint64_t elements;
    };
    static inline constinit Asked asked_{};
    const Asked outer_;
};

std::uint32_t hashOfElement(id element, std::uint64_t share) {
    if (!element)
        return 0;
    if (isPlainString(element))
        return static_cast<NSString *>(element)->ownHash();
    if (containerKindOf(element) == ContainerKind::none)
        return element->hash();
    if (share == 0)
        return 0;
    const Share asked(element, share);
    return element->hash(); // a client's class may have one that goes with its `isEqual:`
}

// The elements' own operations may change the container: each is kept while it is asked, and what is gone
// then does not count.

// `counted`: so many elements, from both ends.
std::uint32_t hashOfArray(const NSArray *array, std::uint32_t counted, std::uint64_t shareOfEach) {
    const std::uint32_t count = array->count();
    std::uint32_t hash = count;
    for (std::uint32_t i = 0; i < counted; ++i) {
        const std::uint32_t index = i < counted / 2 ? i : i + (count - counted);
        if (index >= array->count())
            break;
        const Kept element(array->view()[index]);
        hash = text::hashPair(hash, hashOfElement(element.get(), shareOfEach));
    }
    return hash;
}

// A sum, because equal tables may have their entries in different orders.
std::uint32_t hashOfTable(const HashTable &table, std::uint64_t shareOfEach) {
    std::uint32_t sum = table.count();
    for (std::uint32_t i = 0; table.entries() + i < table.end(); ++i) {
        const Kept key(table.entries()[i].key), value(table.entries()[i].value);
        if (key.get())
            sum += text::hashPair(hashOfElement(key.get(), shareOfEach),
                                  hashOfElement(value.get(), shareOfEach));
    }
    return sum;
}

} // namespace

ContainerKind containerKindOf(id object) {
    if (!object)
        return ContainerKind::none;
    for (Class *cls = object->classObject(); cls; cls = cls->superclass())
        if (const ContainerKind kind = kindOfLibraryClass(cls); kind != ContainerKind::none)
            return kind;
    return ContainerKind::none;
}

bool areContainersEqual(id a, id b) {
    return a == b || EqualityWalk().run(a, b);
}

std::uint32_t hashOfContainer(id container) {
    const Kept kept(container); // whatever its elements' own operations do
    const ContainerKind kind = containerKindOf(container);
    const std::uint32_t count = countOf(container, kind);
    const std::uint64_t share = Share::of(container, count);
    const std::uint64_t shareOfEach = share > count ? (share - count) / (count + std::uint64_t{1}) : 0;
    if (kind == ContainerKind::array)
        return hashOfArray(static_cast<NSArray *>(container),
                           static_cast<std::uint32_t>(std::min<std::uint64_t>(count, share)), shareOfEach);
    // No few of a table's entries can be chosen whatever their order is.
    return share < count ? count : hashOfTable(tableOf(container, kind), shareOfEach);
}

} // namespace qb
