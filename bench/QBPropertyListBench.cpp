// Property lists of 1 MB: the same tree written as text and read back into objects, against JSON libraries.
//
// The tree is a site's pages: dictionaries with the same keys again and again, short words, titles and texts
// that need quotes, some of them with escapes. Writing includes the finished text, reading the release of all
// objects.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBPropertyListOutputStream.h>

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#if QB_HAVE_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#if QB_HAVE_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

namespace {

constexpr int kPages = 1'100; // some 1 MB of text

class TreeMaker {
public:
    Ref<NSArray> tree() {
        auto pages = NSMutableArray::init();
        for (int i = 0; i < kPages; ++i)
            pages->addObject(page(i));
        return pages->copy();
    }

private:
    std::size_t below(std::size_t limit) { return generator_() % limit; }

    std::string word() {
        std::string text;
        for (std::size_t length = 3 + below(8); length != 0; --length)
            text += static_cast<char>('a' + below(26));
        return text;
    }

    std::string sentence(std::size_t words) {
        std::string text = word();
        while (--words) {
            constexpr const char *kBetween[] = {" ", " ", " ", " ", " ", ", ", " \"", "\n", " \xC3\xA4"};
            text += kBetween[below(std::size(kBetween))] + word();
        }
        return text;
    }

    static NSString *string(const std::string &text) { return NSString::stringWith(text); }

    NSDictionary *link() {
        return NSDictionary::dictionaryWith(
            {{"href"_ns, string("/" + word() + "/" + word() + ".html")}, {"text"_ns, string(sentence(3))}});
    }

    NSDictionary *page(int number) {
        auto *const tags = NSMutableArray::array();
        auto *const links = NSMutableArray::array();
        for (std::size_t count = 1 + below(8); count != 0; --count) {
            tags->addObject(string(word()));
            links->addObject(link());
        }
        return NSDictionary::dictionaryWith({{"number"_ns, string(std::to_string(number))},
                                             {"title"_ns, string(sentence(6))},
                                             {"language"_ns, "en"_ns},
                                             {"path"_ns, string("/" + word() + "/" + word())},
                                             {"tags"_ns, tags},
                                             {"links"_ns, links},
                                             {"abstract"_ns, string(sentence(40))}});
    }

    std::mt19937 generator_{42}; // NOLINT(cert-msc51-cpp): the same on every run
};

NSArray *sharedTree() {
    static const Ref<NSArray> tree = [] {
        const NSAutoreleasePool pool;
        return TreeMaker().tree();
    }();
    return tree;
}

void writeOurs(benchmark::State &state) {
    NSArray *const tree = sharedTree();
    std::size_t bytes = 0;
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        QBPropertyListOutputStream *const stream = QBPropertyListOutputStream::stream();
        stream->writeObject(tree);
        bytes = stream->targetData()->length();
    }
    state.counters["text"] = static_cast<double>(bytes);
}

void readOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    QBPropertyListOutputStream *const stream = QBPropertyListOutputStream::stream();
    stream->writeObject(sharedTree());
    NSData *const text = stream->targetData();
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(text->propertyList());
    }
}

BENCHMARK(writeOurs)->Name("PropertyList/write/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(readOurs)->Name("PropertyList/read/ours")->Unit(benchmark::kMicrosecond);

#if QB_HAVE_NLOHMANN
nlohmann::json jsonOf(id value) {
    if (auto *const array = qb::castOrNil<NSArray>(value)) {
        auto json = nlohmann::json::array();
        for (id element : *array)
            json.push_back(jsonOf(element));
        return json;
    }
    if (auto *const dictionary = qb::castOrNil<NSDictionary>(value)) {
        auto json = nlohmann::json::object();
        for (const auto &[key, element] : *dictionary)
            json[std::string(key->stringValue()->view())] = jsonOf(element);
        return json;
    }
    return std::string(value->stringValue()->view());
}

void writeNlohmann(benchmark::State &state) {
    const nlohmann::json tree = jsonOf(sharedTree());
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.dump());
}

void readNlohmann(benchmark::State &state) {
    const std::string text = jsonOf(sharedTree()).dump();
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(text));
}

BENCHMARK(writeNlohmann)->Name("PropertyList/write/nlohmann")->Unit(benchmark::kMicrosecond);
BENCHMARK(readNlohmann)->Name("PropertyList/read/nlohmann")->Unit(benchmark::kMicrosecond);

#if QB_HAVE_RAPIDJSON
void writeRapidjson(benchmark::State &state) {
    rapidjson::Document tree;
    tree.Parse(jsonOf(sharedTree()).dump().c_str());
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        tree.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetString());
    }
}

void readRapidjson(benchmark::State &state) {
    const std::string text = jsonOf(sharedTree()).dump();
    for (auto _ : state) {
        rapidjson::Document tree;
        tree.Parse(text.data(), text.size());
        benchmark::DoNotOptimize(tree.HasParseError());
    }
}

BENCHMARK(writeRapidjson)->Name("PropertyList/write/rapidjson")->Unit(benchmark::kMicrosecond);
BENCHMARK(readRapidjson)->Name("PropertyList/read/rapidjson")->Unit(benchmark::kMicrosecond);
#endif
#endif

} // namespace
