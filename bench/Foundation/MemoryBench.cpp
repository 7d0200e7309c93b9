// What values cost: bytes each (as many as make up 64 MB), shown where other rows have nanoseconds. Memory
// that others have given back would cost nothing: it takes a process that has only one row to measure.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#if QB_HAVE_QT
#include <QByteArray>
#include <QHash>
#include <QList>
#endif

namespace {

std::size_t bytesInUse() {
    std::size_t size = 0, resident = 0; // in pages
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

// Returns how many bytes one of the values that `make` makes takes, the place of its reference not counted.
template <class Make>
double bytesEach(std::size_t expected, Make make) {
    const std::size_t count = 64 * 1024 * 1024 / expected;    // large pages vanish in that
    auto &values = *new std::vector<decltype(make())>(count); // kept, for who comes next
    const std::size_t before = bytesInUse();
    for (auto &value : values)
        value = make();
    return static_cast<double>(bytesInUse() - before) / static_cast<double>(count);
}

template <class T>
std::unique_ptr<T> filled(const std::function<void(T &)> &fill) {
    auto value = std::make_unique<T>();
    fill(*value);
    return value;
}

std::string keyText(int i) {
    return "key." + std::to_string(1000 + i);
}

// Adds a benchmark; all its turns tell what the first one saw.
template <class Make>
void report(const std::string &name, std::size_t expected, Make make) {
    const auto run = [expected, make, bytes = 0.0](benchmark::State &state) mutable {
        if (bytes == 0)
            bytes = bytesEach(expected, make);
        for (auto _ : state)
            state.SetIterationTime(bytes * 1e-9);
    };
    benchmark::RegisterBenchmark(("Memory/" + name).c_str(), run)->UseManualTime()->Iterations(1000);
}

void reportOurs() {
    report("object/ours", 16, [] { return NSObject::init(); });
    report("string-of-8/ours", 64, [] { return NSString::initWith("abcdefgh"); });
    const auto keys = std::make_shared<std::vector<Ref<NSString>>>();
    for (int i = 0; i < 16; ++i)
        keys->push_back(NSString::initWith(keyText(i)));
    report("array-of-16/ours", 200, [keys] {
        auto array = NSMutableArray::init();
        for (const auto &key : *keys)
            array->addObject(key);
        return array;
    });
    report("dictionary-of-16/ours", 500, [keys] {
        auto dictionary = NSMutableDictionary::init();
        for (const auto &key : *keys)
            dictionary->setObjectForKey(key, key);
        return dictionary;
    });
}

// The keys' texts are the maps' own here, where ours are shared.
void reportPeers() {
    struct Plain {
        virtual ~Plain() = default;
        int count = 1;
    };
    report("object/new", 16, [] { return std::make_unique<Plain>(); });
    report("string-of-8/std", 64, [] { return std::make_unique<std::string>("abcdefgh"); });
    report("array-of-16/std", 200, [] {
        return filled<std::vector<void *>>([](auto &vector) {
            for (int i = 0; i < 16; ++i)
                vector.push_back(&vector);
        });
    });
    report("dictionary-of-16/std", 500, [] {
        return filled<std::unordered_map<std::string, void *>>([](auto &map) {
            for (int i = 0; i < 16; ++i)
                map[keyText(i)] = &map;
        });
    });
#if QB_HAVE_QT
    report("string-of-8/qt", 64, [] { return std::make_unique<QByteArray>("abcdefgh"); });
    report("array-of-16/qt", 200, [] {
        return filled<QList<void *>>([](auto &list) {
            for (int i = 0; i < 16; ++i)
                list.append(&list);
        });
    });
    report("dictionary-of-16/qt", 500, [] {
        return filled<QHash<QByteArray, void *>>([](auto &hash) {
            for (int i = 0; i < 16; ++i)
                hash.insert(QByteArray::fromStdString(keyText(i)), &hash);
        });
    });
#endif
}

const bool isRegistered = [] {
    reportOurs();
    reportPeers();
    return true;
}();

} // namespace
