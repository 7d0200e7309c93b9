// Dictionaries with string keys against hash maps of strings: 16, 1 000 and 100 000 keys.
//
// Keys are looked up in another order than they were put in: "hit" by strings of their own, "hit-same" by the
// very ones that were put in, as constants and keys that came from another dictionary are (a map of standard
// strings keeps a copy, so that to it they are others). Time is per lookup, and per key for inserting and
// going over them; inserting includes making and destroying the table.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#if QB_HAVE_ABSL
#include <absl/container/flat_hash_map.h>
#endif
#if QB_HAVE_BOOST
#include <boost/unordered/unordered_flat_map.hpp>
#endif
#if QB_HAVE_QT
#include <QByteArray>
#include <QHash>
#endif
#if QB_HAVE_GLIB
#include <glib.h>
#endif

namespace {

constexpr int kSizes[] = {16, 1'000, 100'000};

enum class Order { made, shuffled };

std::vector<std::string> makeTexts(std::size_t count, const char *prefix, Order order) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i)
        texts.push_back(prefix + std::to_string(i * 7919 % 999'983));
    if (order == Order::shuffled)
        std::shuffle(texts.begin(), texts.end(),
                     std::mt19937(4711)); // NOLINT(cert-msc51-cpp): the same on every run
    return texts;
}

// What a map of strings to pointers looks like to the benchmarks.
template <class Map, class Key>
struct StandardLike {
    using Table = Map;
    static Key make(const std::string &text) { return Key(text); }
    static void insert(Map &map, const Key &key) { map[key] = &map; }
    static const void *find(const Map &map, const Key &key) {
        const auto place = map.find(key);
        return place == map.end() ? nullptr : place->second;
    }
    static std::uintptr_t walk(const Map &map) {
        std::uintptr_t sum = 0;
        for (const auto &entry : map)
            sum += reinterpret_cast<std::uintptr_t>(entry.second);
        return sum;
    }
};

struct Ours {
    struct Table {
        Ref<NSMutableDictionary> dictionary = NSMutableDictionary::init();
    };
    static Ref<NSString> make(const std::string &text) {
        auto string = NSString::initWith(text);
        benchmark::DoNotOptimize(string->hash()); // kept in the string from its first use on
        return string;
    }
    static void insert(Table &table, const Ref<NSString> &key) {
        table.dictionary->setObjectForKey(key, key);
    }
    static const void *find(const Table &table, const Ref<NSString> &key) {
        return table.dictionary->objectForKey(key);
    }
    static std::uintptr_t walk(const Table &table) {
        std::uintptr_t sum = 0;
        for (const auto &[key, value] : *table.dictionary)
            sum += reinterpret_cast<std::uintptr_t>(value);
        return sum;
    }
};

#if QB_HAVE_QT
struct Qt {
    using Table = QHash<QByteArray, const void *>;
    static QByteArray make(const std::string &text) { return QByteArray::fromStdString(text); }
    static void insert(Table &table, const QByteArray &key) { table.insert(key, &table); }
    static const void *find(const Table &table, const QByteArray &key) { return table.value(key); }
    static std::uintptr_t walk(const Table &table) {
        std::uintptr_t sum = 0;
        for (const void *value : table)
            sum += reinterpret_cast<std::uintptr_t>(value);
        return sum;
    }
};
#endif

#if QB_HAVE_GLIB
struct Glib {
    struct Table {
        Table() : table(g_hash_table_new(g_str_hash, g_str_equal)) {}
        Table(const Table &) = delete;
        ~Table() { g_hash_table_destroy(table); }
        GHashTable *table;
    };
    static std::string make(const std::string &text) { return text; }
    static void insert(Table &table, const std::string &key) {
        g_hash_table_insert(table.table, const_cast<char *>(key.c_str()), &table);
    }
    static const void *find(const Table &table, const std::string &key) {
        return g_hash_table_lookup(table.table, key.c_str());
    }
    static std::uintptr_t walk(const Table &table) {
        std::uintptr_t sum = 0;
        GHashTableIter next;
        void *value = nullptr;
        g_hash_table_iter_init(&next, table.table);
        while (g_hash_table_iter_next(&next, nullptr, &value))
            sum += reinterpret_cast<std::uintptr_t>(value);
        return sum;
    }
};
#endif

template <class Peer>
auto makeKeys(std::size_t count, const char *prefix, Order order) {
    std::vector<decltype(Peer::make({}))> keys;
    for (const std::string &text : makeTexts(count, prefix, order))
        keys.push_back(Peer::make(text));
    return keys;
}

enum class Asked { same, equal, missing };

template <class Peer>
void find(benchmark::State &state, Asked what) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const auto keys = makeKeys<Peer>(count, "name.", Order::made);
    typename Peer::Table table;
    for (const auto &key : keys)
        Peer::insert(table, key);
    auto asked = makeKeys<Peer>(count, what == Asked::missing ? "nome." : "name.", Order::shuffled);
    if (what == Asked::same) {
        asked = keys;
        std::shuffle(asked.begin(), asked.end(),
                     std::mt19937(4711)); // NOLINT(cert-msc51-cpp): the same on every run
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Peer::find(table, asked[next]));
        next = next + 1 == count ? 0 : next + 1;
    }
}

template <class Peer>
void insert(benchmark::State &state) {
    const auto keys = makeKeys<Peer>(static_cast<std::size_t>(state.range(0)), "name.", Order::made);
    while (state.KeepRunningBatch(state.range(0))) {
        typename Peer::Table table;
        for (const auto &key : keys)
            Peer::insert(table, key);
    }
}

template <class Peer>
void walk(benchmark::State &state) {
    const auto keys = makeKeys<Peer>(static_cast<std::size_t>(state.range(0)), "name.", Order::made);
    typename Peer::Table table;
    for (const auto &key : keys)
        Peer::insert(table, key);
    while (state.KeepRunningBatch(state.range(0)))
        benchmark::DoNotOptimize(Peer::walk(table));
}

template <class Peer>
void registerAs(const std::string &name) {
    const auto add = [&](const std::string &row, auto function) {
        auto *const entry =
            benchmark::RegisterBenchmark(("NSDictionary/" + row + "/" + name).c_str(), function);
        for (int size : kSizes)
            entry->Arg(size);
    };
    add("hit", [](benchmark::State &state) { find<Peer>(state, Asked::equal); });
    add("hit-same", [](benchmark::State &state) { find<Peer>(state, Asked::same); });
    add("miss", [](benchmark::State &state) { find<Peer>(state, Asked::missing); });
    add("insert", &insert<Peer>);
    add("iterate", &walk<Peer>);
}

const bool isRegistered = [] {
    registerAs<Ours>("ours");
    registerAs<StandardLike<std::unordered_map<std::string, const void *>, std::string>>("std");
#if QB_HAVE_ABSL
    registerAs<StandardLike<absl::flat_hash_map<std::string, const void *>, std::string>>("absl");
#endif
#if QB_HAVE_BOOST
    registerAs<StandardLike<boost::unordered_flat_map<std::string, const void *>, std::string>>("boost");
#endif
#if QB_HAVE_QT
    registerAs<Qt>("QHash");
#endif
#if QB_HAVE_GLIB
    registerAs<Glib>("GHashTable");
#endif
    return true;
}();

} // namespace
