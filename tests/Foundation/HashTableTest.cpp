#include <QBFoundation/Foundation/HashTable.h>

#include "support/PoolFixture.h"

#include <unordered_map>

using HashTableTest = PoolFixture;

// Puts, finds and removes keys that `makeKey` makes of numbers, and does the same with a list of entries.
template <class MakeKey>
static void compareWithList(MakeKey makeKey, unsigned keys, int steps) {
    std::mt19937 generator(11);
    qb::HashTable table;
    std::vector<std::pair<unsigned, int>> entries; // the values are the steps
    const auto placeOf = [&](unsigned key) {
        return std::find_if(entries.begin(), entries.end(),
                            [key](const auto &entry) { return entry.first == key; });
    };
    const auto valueIn = [](const auto &entry) { return static_cast<NSNumber *>(entry.value)->intValue(); };
    for (int step = 0; step < steps; ++step) {
        const unsigned number = generator() % keys, asked = generator() % keys;
        const Ref<NSObject> key = makeKey(number), askedKey = makeKey(asked);
        const auto place = placeOf(number);
        const bool isNew = place == entries.end();
        // Waves of more puts, then more removals.
        if (generator() % 8 < (step / 500 % 2 ? 3 : 5)) {
            auto &entry = table.entryFor(key);
            ASSERT_EQ(entry.value == nullptr, isNew);
            if (entry.value)
                entry.value->release();
            entry.value = NSNumber::initWithInt(step).detach();
            if (isNew)
                entries.emplace_back(number, step);
            else
                place->second = step;
        } else {
            auto *const entry = table.find(key);
            ASSERT_EQ(entry == nullptr, isNew);
            if (entry) {
                table.remove(entry);
                entries.erase(place);
            }
        }
        ASSERT_EQ(table.count(), entries.size());
        const auto *found = table.find(askedKey);
        ASSERT_EQ(found ? valueIn(*found) : -1,
                  placeOf(asked) != entries.end() ? placeOf(asked)->second : -1);
        if (auto *const text = qb::castOrNil<NSString>(askedKey.get())) {
            ASSERT_EQ(table.findText(text->view()), found);
        }
        if (step % 100 == 0) {
            ASSERT_TRUE(table.begin() == table.end() || table.begin()->key); // queues begin without holes
            auto expected = entries.begin();
            for (const auto &entry : table) {
                if (entry.key) {
                    ASSERT_EQ(valueIn(entry), (expected++)->second);
                }
            }
            ASSERT_EQ(expected, entries.end());
        }
    }
}

static Ref<NSObject> stringKey(unsigned number) {
    const std::string text = "key" + std::string(number % 20, 'x') + std::to_string(number);
    if (number % 3 == 0)
        return NSMutableString::initWith(text);
    return NSString::initWith(text);
}

TEST_F(HashTableTest, DoesWhatAListOfEntriesDoes) {
    // A key whose hash says next to nothing.
    struct Clash : NSObject {
        explicit Clash(unsigned value) : value_(value) {}
        BOOL isEqual(id other) const override { return static_cast<const Clash *>(other)->value_ == value_; }
        std::uint32_t hash() const override { return value_ % 3; }
        unsigned value_;
    };
    compareWithList(&stringKey, 12, 1000);
    compareWithList(&stringKey, 3000, 20000);
    compareWithList([](unsigned number) { return Ref<NSObject>::adopt(new Clash(number)); }, 60, 3000);
}

TEST_F(HashTableTest, FindsTheKeyThatWasComparedIfItIsStillThere) {
    struct Key : NSObject {
        std::function<bool()> onComparison = [] { return true; };
        BOOL isEqual(id) const override { return onComparison(); }
        std::uint32_t hash() const override { return 5; }
    };
    const Ref<Key> key = Ref<Key>::adopt(new Key), asked = Ref<Key>::adopt(new Key);
    qb::HashTable table;
    table.entryFor("first"_ns);
    table.entryFor(key);
    asked->onComparison = [&] { // the key's entry moves to the first one's place
        table.remove(table.find("first"_ns));
        table.reserve(100);
        return true;
    };
    const auto *const entry = table.find(asked);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->key, key.get());
    asked->onComparison = [&] {
        table.removeAll();
        table.entryFor("other"_ns);
        return true;
    };
    EXPECT_EQ(table.find(asked), nullptr);
    table.entryFor(key);
    table.remove(table.find("other"_ns));
    const Ref<Key> equal = Ref<Key>::adopt(new Key);
    equal->onComparison = [] { return false; };
    bool isThere = false;
    asked->onComparison = [&] { // an equal key comes, to a place before that of the one compared
        if (!isThere)
            table.entryFor(equal);
        return std::exchange(isThere, true);
    };
    EXPECT_EQ(table.entryFor(asked).key, equal.get());
}

TEST_F(HashTableTest, TellsTextsOfOneHashApartAndFindsThoseOfOtherClasses) {
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
    class OtherString : public NSString {};
    const auto key = Ref<OtherString>::adopt(new OtherString);
    const auto *const empty = &table.entryFor(key);
    EXPECT_EQ(table.findText(""), empty);
}

TEST_F(HashTableTest, KeysAreRetainedAndGivenBack) {
    const Ref<NSString> key = NSString::initWith("key"), value = NSString::initWith("value");
    {
        qb::HashTable table;
        table.reserve(100);
        table.entryFor(key).value = value->retain();
        table.entryFor(NSString::initWith("key").get());
        EXPECT_EQ(key->retainCount(), 2u);
        table.remove(table.find(NSString::initWith("key").get()));
        EXPECT_EQ(key->retainCount() + value->retainCount(), 2u);
        table.entryFor(key).value = value->retain();
    }
    EXPECT_EQ(key->retainCount() + value->retainCount(), 2u);
}

TEST_F(HashTableTest, TablesThatNoMemoryHoldsAreRefusedOn32Bits) {
    if (sizeof(void *) == 4) {
        EXPECT_THROW(qb::HashTable().reserve(120'000'000), std::bad_alloc);
    }
}
