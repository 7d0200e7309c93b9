// Arrays as sets: 100 000 and 1 000 000 texts, half of which stand twice, against a set of views of such
// texts.
//
// Time is for all elements. Of two arrays the second one holds the second half of the first one's texts and
// as many others.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#if QB_HAVE_ABSL
#include <absl/container/flat_hash_set.h>
#endif

namespace {

// Returns `count` texts, from "key.<first>" on, each twice, in no order.
std::vector<std::string> makeTexts(std::size_t count, std::size_t first) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i)
        texts.push_back("key." + std::to_string(first + i / 2));
    std::shuffle(texts.begin(), texts.end(),
                 std::mt19937(4711)); // NOLINT(cert-msc51-cpp): the same on every run
    return texts;
}

std::vector<std::string> makeTexts(const benchmark::State &state, bool isSecond) {
    const auto count = static_cast<std::size_t>(state.range(0));
    return makeTexts(count, isSecond ? count / 4 : 0);
}

struct Ours {
    using List = Ref<NSMutableArray>;

    static List make(const std::vector<std::string> &texts) {
        auto array = NSMutableArray::init();
        for (const std::string &text : texts)
            array->addObject(NSString::initWith(text).get());
        return array;
    }
    static const void *unique(const List &a, const List &) { return a->uniqueArray(); }
    static const void *plus(const List &a, const List &b) { return a->plus(b); }
    static const void *minus(const List &a, const List &b) { return a->minus(b); }
    static const void *common(const List &a, const List &b) { return a->commonElementsWithArray(b); }
};

#if QB_HAVE_ABSL
struct Absl {
    using List = std::vector<std::string>;
    using Views = std::vector<std::string_view>;
    using Set = absl::flat_hash_set<std::string_view>;

    static List make(const std::vector<std::string> &texts) { return texts; }
    static std::size_t unique(const List &a, const List &) {
        Views unique;
        Set seen;
        addUnseen(unique, a, seen);
        return unique.size();
    }
    static std::size_t plus(const List &a, const List &b) {
        Views sum;
        Set seen;
        addUnseen(sum, a, seen);
        addUnseen(sum, b, seen);
        return sum.size();
    }
    static std::size_t minus(const List &a, const List &b) {
        Views rest;
        Set seen(b.begin(), b.end());
        addUnseen(rest, a, seen);
        return rest.size();
    }
    static std::size_t common(const List &a, const List &b) {
        Views common;
        const Set own(a.begin(), a.end());
        for (std::string_view text : b)
            if (own.contains(text))
                common.push_back(text);
        return common.size();
    }

private:
    static void addUnseen(Views &target, const List &list, Set &seen) {
        seen.reserve(seen.size() + list.size());
        target.reserve(target.size() + list.size());
        for (std::string_view text : list)
            if (seen.insert(text).second)
                target.push_back(text);
    }
};
#endif

template <class Peer>
void measure(benchmark::State &state, auto operation) {
    const NSAutoreleasePool outer;
    const auto first = Peer::make(makeTexts(state, /*isSecond=*/false));
    const auto second = Peer::make(makeTexts(state, /*isSecond=*/true));
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(operation(first, second));
    }
}

template <class Peer>
void registerAs(const std::string &name) {
    const auto add = [&](const std::string &row, auto operation) {
        benchmark::RegisterBenchmark(
            ("NSArray/" + row + "/" + name).c_str(),
            [operation](benchmark::State &state) { measure<Peer>(state, operation); })
            ->Arg(100'000)
            ->Arg(1'000'000)
            ->Unit(benchmark::kMillisecond);
    };
    add("unique", &Peer::unique);
    add("plus", &Peer::plus);
    add("minus", &Peer::minus);
    add("common", &Peer::common);
}

const bool isRegistered = [] {
    registerAs<Ours>("ours");
#if QB_HAVE_ABSL
    registerAs<Absl>("absl");
#endif
    return true;
}();

} // namespace
