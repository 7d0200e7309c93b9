// A mapping, a selecting and a rejecting filter behind each other over 100 000 objects, beside the loop that
// does the same by virtual calls.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/QBEnumFilter.h>

#include "QBEnumFilterBench.h"

#include <benchmark/benchmark.h>

namespace {

constexpr std::uint32_t kCount = 100'000;

Ref<NSArray> entries() {
    auto array = NSMutableArray::init();
    for (std::uint32_t i = 0; i < kCount; ++i)
        array->addObject(Entry::initWithNumber(i).get());
    return array;
}

Ref<NSArray> numbers() {
    auto array = NSMutableArray::init();
    for (std::uint32_t i = 0; i < kCount; ++i)
        array->addObject(NSNumber::numberWithUnsignedInt(i * 7919));
    return array;
}

// Measures `filter`, which goes over the array and returns what is left.
template <class Filter>
void measure(benchmark::State &state, const Ref<NSArray> &array, Filter filter) {
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(filter(array.get())->count());
    }
}

NSArray *filtered(NSArray *array, SEL map, SEL select, SEL reject) {
    auto *const selected = QBEnumSelectFilter::filterWithMessageOfClass(select);
    selected->setSource(array->objectEnumerator()->filterWithMessage(map));
    auto *const rejected = QBEnumRejectFilter::filterWithMessageOfClass(reject);
    rejected->setSource(selected);
    return rejected->allObjects();
}

NSArray *replacementsInALoop(NSArray *array) {
    NSMutableArray *const result = NSMutableArray::array();
    for (id object : *array) {
        Entry *const replacement = static_cast<Entry *>(object)->replacement();
        if (replacement && replacement->isInStock() && !replacement->isBlocked())
            result->addObject(replacement);
    }
    return result;
}

NSArray *textsInALoop(NSArray *array) {
    NSMutableArray *const result = NSMutableArray::array();
    for (id object : *array) {
        NSString *const text = object->stringValue();
        if (text && text->containsData() && !text->isIsoDateTimeString())
            result->addObject(text);
    }
    return result;
}

void filterEntries(benchmark::State &state) {
    measure(state, entries(), [](NSArray *array) {
        return filtered(array, "replacement"_sel, "isInStock"_sel, "isBlocked"_sel);
    });
}
BENCHMARK(filterEntries)->Name("EnumFilter/map-select-reject/ours")->Unit(benchmark::kMicrosecond);

void loopOverEntries(benchmark::State &state) {
    measure(state, entries(), &replacementsInALoop);
}
BENCHMARK(loopOverEntries)->Name("EnumFilter/map-select-reject/virtual")->Unit(benchmark::kMicrosecond);

void filterNumbers(benchmark::State &state) {
    measure(state, numbers(), [](NSArray *array) {
        return filtered(array, "stringValue"_sel, "containsData"_sel, "isIsoDateTimeString"_sel);
    });
}
BENCHMARK(filterNumbers)->Name("EnumFilter/texts-of-numbers/ours")->Unit(benchmark::kMicrosecond);

void loopOverNumbers(benchmark::State &state) {
    measure(state, numbers(), &textsInALoop);
}
BENCHMARK(loopOverNumbers)->Name("EnumFilter/texts-of-numbers/virtual")->Unit(benchmark::kMicrosecond);

} // namespace
