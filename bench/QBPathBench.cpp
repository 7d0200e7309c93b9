// Deep access by a key of four components, and slash paths.
//
// The tree has 16 keys at each level. "keys" is a way through dictionaries only, "index" one with an array on
// it; the peer's pointer is made beforehand ("pointer"), or from its text each time ("text"), as ours is.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBPath.h>

#include <benchmark/benchmark.h>

#include <string>

#if QB_HAVE_NLOHMANN
#include <nlohmann/json.hpp>
#endif

namespace {

constexpr const char *kNames[] = {"title", "author",  "language", "keywords", "path",     "abstract",
                                  "links", "date",    "pages",    "styles",   "template", "section",
                                  "menu",  "contact", "index",    "feed"};

// A dictionary of 16 texts, and under `name` a value.
NSMutableDictionary *with(NSString *name, id value) {
    auto *const dictionary = NSMutableDictionary::dictionary();
    for (const char *key : kNames)
        dictionary->setObjectForKey("text"_ns, NSString::stringWithCString(key));
    dictionary->setObjectForKey(value, name);
    return dictionary;
}

NSDictionary *tree() {
    NSMutableDictionary *const pages = with("contact"_ns, with("title"_ns, "Contact"_ns));
    pages->setObjectForKey(NSArray::arrayWith({"a"_ns, "b"_ns, "c"_ns, "d"_ns}), "index"_ns);
    return with("menu"_ns, with("pages"_ns, pages));
}

void getOurs(benchmark::State &state, const char *text) {
    const NSAutoreleasePool pool;
    NSDictionary *const values = tree();
    NSString *const key = NSString::stringWithCString(text);
    for (auto _ : state)
        benchmark::DoNotOptimize(values->deepObjectForKey(key));
}

BENCHMARK_CAPTURE(getOurs, keys, "menu.pages.contact.title")->Name("DeepAccess/keys/ours");
BENCHMARK_CAPTURE(getOurs, index, "menu.pages.index.3")->Name("DeepAccess/index/ours");

void relativeOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    QBPath *const from = "/site/pages/articles/2003/spring.html"_ns->asQbPath();
    QBPath *const to = "/site/pages/photos/index.html"_ns->asQbPath();
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(from->relativePathTo(to));
    }
}

BENCHMARK(relativeOurs)->Name("QBPath/relative/ours");

#if QB_HAVE_NLOHMANN
nlohmann::json jsonOf(id value) {
    if (auto *const dictionary = qb::castOrNil<NSDictionary>(value)) {
        auto json = nlohmann::json::object();
        for (const auto &[key, element] : *dictionary)
            json[std::string(key->stringValue()->view())] = jsonOf(element);
        return json;
    }
    if (auto *const array = qb::castOrNil<NSArray>(value)) {
        auto json = nlohmann::json::array();
        for (id element : *array)
            json.push_back(jsonOf(element));
        return json;
    }
    return std::string(value->stringValue()->view());
}

nlohmann::json jsonTree() {
    const NSAutoreleasePool pool;
    return jsonOf(tree());
}

void getNlohmann(benchmark::State &state, const char *text) {
    const nlohmann::json values = jsonTree();
    const nlohmann::json::json_pointer pointer(text);
    for (auto _ : state)
        benchmark::DoNotOptimize(&values.at(pointer));
}

void getNlohmannByText(benchmark::State &state, const char *text) {
    const nlohmann::json values = jsonTree();
    const std::string key = text;
    for (auto _ : state)
        benchmark::DoNotOptimize(&values.at(nlohmann::json::json_pointer(key)));
}

BENCHMARK_CAPTURE(getNlohmann, keys, "/menu/pages/contact/title")->Name("DeepAccess/keys/nlohmann-pointer");
BENCHMARK_CAPTURE(getNlohmann, index, "/menu/pages/index/3")->Name("DeepAccess/index/nlohmann-pointer");
BENCHMARK_CAPTURE(getNlohmannByText, keys, "/menu/pages/contact/title")
    ->Name("DeepAccess/keys/nlohmann-text");
BENCHMARK_CAPTURE(getNlohmannByText, index, "/menu/pages/index/3")->Name("DeepAccess/index/nlohmann-text");
#endif

} // namespace
