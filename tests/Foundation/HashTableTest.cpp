#include <QBFoundation/Foundation/HashTable.h>

#include "support/PoolFixture.h"

#include <algorithm>
#include <map>
#include <random>
#include <unordered_map>
#include <utility>

using HashTableTest = PoolFixture;

namespace {

/// A key whose hash says next to nothing.
class Clash : public NSObject {
public:
    explicit Clash(int value) : value_(value) {}
    BOOL isEqual(id other) const override { return static_cast<const Clash *>(other)->value_ == value_; }
    std::uint32_t hash() const override { return static_cast<std::uint32_t>(value_ % 3); }

private:
    int value_;
};

// What the table must hold: the keys in their order, with their values.
struct Model {
    std::vector<std::pair<int, int>> entries;

    auto find(int key) {
        return std::find_if(entries.begin(), entries.end(),
                            [key](const auto &entry) { return entry.first == key; });
    }
};

template <class MakeKey>
void compareWithModel(MakeKey makeKey, int keys, int steps) {
    std::mt19937 generator(11);
    qb::HashTable table;
    Model model;
    std::map<NSObject *, int> numbers; // the table's values
    std::vector<Ref<NSString>> values;
    for (int step = 0; step < steps; ++step) {
        const int number = static_cast<int>(generator() % static_cast<unsigned>(keys));
        const Ref<NSObject> key = makeKey(number);
        // Waves of more puts, then more removals.
        const bool puts = generator() % 8 < (step / 500 % 2 ? 3 : 5);
        if (puts) {
            auto &entry = table.entryFor(key);
            const auto place = model.find(number);
            ASSERT_EQ(entry.value == nullptr, place == model.entries.end());
            values.push_back(NSString::initWith(std::to_string(step)));
            if (entry.value)
                entry.value->release();
            entry.value = values.back()->retain();
            numbers[entry.value] = step;
            if (place == model.entries.end())
                model.entries.emplace_back(number, step);
            else
                place->second = step;
        } else {
            const auto place = model.find(number);
            ASSERT_EQ(table.remove(key), place != model.entries.end());
            if (place != model.entries.end())
                model.entries.erase(place);
        }
        ASSERT_EQ(table.count(), model.entries.size());
        const int asked = static_cast<int>(generator() % static_cast<unsigned>(keys));
        const Ref<NSObject> askedKey = makeKey(asked);
        const auto *found = table.find(askedKey);
        const auto place = model.find(asked);
        ASSERT_EQ(found != nullptr, place != model.entries.end());
        if (found) {
            ASSERT_EQ(numbers[found->value], place->second);
        }
        if (auto *const text = qb::castOrNil<NSString>(askedKey.get())) {
            ASSERT_EQ(table.findText(text->view()), found);
        }
        if (step % 100 == 0) {
            auto expected = model.entries.begin();
            for (const auto &entry : table) {
                if (entry.key) {
                    ASSERT_EQ(numbers[entry.value], (expected++)->second);
                }
            }
            ASSERT_EQ(expected, model.entries.end());
        }
    }
}

Ref<NSObject> stringKey(int number) {
    const std::string text =
        "key" + std::string(static_cast<std::size_t>(number % 20), 'x') + std::to_string(number);
    if (number % 3 == 0)
        return NSMutableString::initWith(text);
    return NSString::initWith(text);
}

} // namespace

TEST_F(HashTableTest, DoesWhatAListOfEntriesDoes) {
    compareWithModel(&stringKey, 12, 1000);
    compareWithModel(&stringKey, 40, 5000);
    compareWithModel(&stringKey, 3000, 20000);
    compareWithModel([](int number) { return Ref<NSObject>::adopt(new Clash(number)); }, 60, 3000);
}

TEST_F(HashTableTest, FindsTextsThatAreKeysOfOtherClasses) {
    class OtherString : public NSString {};
    const auto key = Ref<OtherString>::adopt(new OtherString);
    qb::HashTable table;
    EXPECT_EQ(table.findText(""), nullptr);
    const auto *const entry = &table.entryFor(key);
    EXPECT_EQ(table.findText(""), entry);
}

TEST_F(HashTableTest, TellsTextsOfOneHashApart) {
    std::unordered_map<std::uint32_t, std::string> texts;
    std::string text, other;
    for (int number = 10'000'000; other.empty(); ++number) {
        text = std::to_string(number);
        other = std::exchange(texts[NSString::initWith(text)->hash()], text);
    }
    qb::HashTable table;
    const auto *const entry = &table.entryFor(NSString::initWith(text).get());
    EXPECT_EQ(table.findText(text), entry);
    EXPECT_EQ(table.findText(other), nullptr);
    const auto *const next = &table.entryFor(NSString::initWith(other).get());
    EXPECT_EQ(table.findText(other), next);
}

TEST_F(HashTableTest, KeysAreRetainedAndGivenBack) {
    Ref<NSString> key = NSString::initWith("key");
    Ref<NSString> value = NSString::initWith("value");
    {
        qb::HashTable table;
        table.reserve(100);
        table.entryFor(key).value = value->retain();
        table.entryFor(NSString::initWith("key").get());
        EXPECT_EQ(key->retainCount(), 2u);
        EXPECT_TRUE(table.remove(NSString::initWith("key").get()));
        EXPECT_FALSE(table.remove(key));
        EXPECT_EQ(key->retainCount() + value->retainCount(), 2u);
        table.entryFor(key).value = value->retain();
    }
    EXPECT_EQ(key->retainCount() + value->retainCount(), 2u);
}
