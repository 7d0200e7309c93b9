#include "support/DirectoryFixture.h"
#include "support/Locales.h"

constexpr int kAscending = -1;
constexpr int kDescending = 1;

// The environment says "C" unless a test says otherwise.
struct OSSorterTest : DirectoryFixture {
    OSSorterTest() { ::setenv("LC_ALL", "C", 1); }
    ~OSSorterTest() override {
        ::setenv("LC_ALL", "C.UTF-8", 1);
        std::setlocale(LC_COLLATE, "C");
    }
};

// Element, key; sorted by swaps, step for step as the class says.
using Pair = std::pair<id, id>;

template <class Compare>
static std::vector<Pair> sortedBySwaps(std::vector<Pair> items, int direction, Compare compare) {
    std::size_t gap = 1;
    while (gap <= items.size())
        gap = 3 * gap + 1;
    while (gap > 2) {
        gap /= 3;
        for (std::size_t i = gap; i < items.size(); ++i)
            for (std::size_t j = i; j >= gap && compare(items[j].second, items[j - gap].second) == direction;
                 j -= gap)
                std::swap(items[j], items[j - gap]);
    }
    return items;
}

// The very same objects.
static void expectObjects(NSArray *sorted, const std::vector<Pair> &expected) {
    ASSERT_EQ(sorted->count(), expected.size());
    for (std::uint32_t i = 0; i < sorted->count(); ++i)
        ASSERT_EQ(sorted->objectAtIndex(i), expected[i].first) << "at " << i;
}

// As the C library compares texts.
static int collated(id a, id b) {
    const int order = std::strcoll(describe(a).c_str(), describe(b).c_str());
    return order < 0 ? -1 : order > 0;
}

const std::string kPlainPieces[] = {"a", "b", "s", "A", "B"}; // never cut
const std::string kPieces[] = {"a", "b", "ch", "s", "A", "B", "1", "ä", "ß", "-", " ", "日", "\xFF", "\x01"};

TEST_F(OSSorterTest, TextsAreSortedBothWaysIntoNewArrays) {
    OSSorter *const sorter = OSSorter::sorterForLanguage(""_ns);
    NSArray *const letters = NSArray::arrayWithObjects("b"_ns, "a"_ns, "c"_ns, "B"_ns);
    NSMutableArray *const sorted = sorter->sortArrayAscending(letters);
    sorted->addObject("more"_ns);
    EXPECT_EQ(describe(sorted), "(B, a, b, c, more)");
    EXPECT_EQ(describe(sorter->sortArrayDescending(letters)), "(c, b, a, B)");
    EXPECT_EQ(describe(letters), "(b, a, c, B)");
    EXPECT_EQ(describe(sorter->sortArrayDescending(nullptr)), "()");
    EXPECT_EQ(localeCompare(number(9), number(10)), 1);
    EXPECT_EQ(localeCompare(nullptr, ""_ns), 0);
    EXPECT_REASON(
        OSSorter::sorterForLanguageCompareFunction("de_DE"_ns, nullptr),
        "OSSorter initWithLanguage:valueFunction:compareFunction: must have a compare function that is "
        "not NULL.");
}

TEST_F(OSSorterTest, ManyTextsComeAsThePassesLeaveThemInEachLanguage) {
    Random random;
    for (const char *language : {"", "de_DE", "cs_CZ"}) {
        const std::string locale = *language ? std::string(language) + ".UTF-8" : "C";
        NEED_LOCALE(locale.c_str());
        for (std::size_t longest : {0, 2, 5, 30}) {
            const NSAutoreleasePool pool;
            NSMutableArray *const array = NSMutableArray::array();
            std::vector<Pair> items;
            for (std::size_t left = 150 + random.below(2500); left != 0; --left) {
                // Some sets begin alike, for longer than one step of a comparison goes, and have plain
                // letters only.
                const bool isStem = longest == 5;
                const std::string text = isStem ? std::string(7 + random.below(3), 'a') +
                                                      randomText(random, random.below(9), kPlainPieces)
                                                : randomText(random, random.below(longest + 1), kPieces);
                // Some stand there twice, some are no strings.
                id object = NSString::stringWith(text);
                if (!items.empty() && random.below(20) == 0)
                    object = items.back().first;
                else if (random.below(30) == 0)
                    object = number(static_cast<int>(random.below(50)));
                array->addObject(object);
                items.push_back({object, object});
            }
            OSSorter *const sorter = OSSorter::sorterForLanguage(NSString::stringWith(language));
            for (int direction : {kAscending, kDescending}) {
                NSArray *const sorted = sorter->_sortArray(array, nullptr, direction);
                std::setlocale(LC_COLLATE, locale.c_str());
                expectObjects(sorted, sortedBySwaps(items, direction, collated));
            }
        }
    }
}

TEST_F(OSSorterTest, TheOrderIsThatOfTheCommandSort) {
    NEED_LOCALE("de_DE.UTF-8");
    Random random;
    NSMutableArray *const lines = NSMutableArray::array();
    std::string text;
    for (int i = 0; i < 5000; ++i) {
        const std::string line =
            randomText(random, 1 + random.below(9), {"a", "b", "c", "Z", "ä", "Ö", "ß", "7"}) + "x";
        lines->addObject(NSString::stringWith(line));
        text += line + "\n";
    }
    directory_.write("in", text);
    const std::string command =
        "LC_ALL=de_DE.UTF-8 sort -o '" + directory_ / "out" + "' '" + directory_ / "in" + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    NSArray *const sorted = OSSorter::sorterForLanguage("de_DE"_ns)->sortArrayAscending(lines);
    EXPECT_EQ(describe(sorted->stringsJoinedByString("\n"_ns)) + "\n", directory_.read("out"));
}

TEST_F(OSSorterTest, TextsMayBeMadeBySortingInAnotherLanguage) {
    struct Listing : NSObject {
        const char *cStringValue() const override {
            NSMutableArray *const names = NSMutableArray::array();
            for (const char *const name : {"c", "b", "a"})
                for (int i = 0; i < 100; ++i)
                    names->addObject(NSString::stringWithCString(name));
            return OSSorter::sorterForLanguage("C"_ns)
                ->sortArrayAscending(names)
                ->firstObject()
                ->cStringValue();
        }
    };
    NSMutableArray *const listings = NSMutableArray::array();
    for (int i = 0; i < 300; ++i)
        listings->addObject(Ref<Listing>::adopt(new Listing).get());
    ::setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_TRUE(OSSorter::sorterForLanguage(""_ns)->sortArrayAscending(listings)->isEqual(listings));
}

namespace {

// What was asked of the functions.
struct Log {
    std::vector<id> values;
    std::vector<Pair> comparisons;
};

id lengthOf(id element, void *context) {
    static_cast<Log *>(context)->values.push_back(element);
    const std::uint32_t length = static_cast<NSString *>(element)->length();
    return length == 0 ? nullptr : NSNumber::numberWithUnsignedInt(length);
}

// No order at all, so that only the very steps give the very result.
std::int32_t fancy(id a, id b) {
    return static_cast<std::int32_t>((a->hash() * 31 + b->hash() * 17) % 5) - 2;
}

std::int32_t loggedFancy(id a, id b, void *context) {
    static_cast<Log *>(context)->comparisons.emplace_back(a, b);
    return fancy(a, b);
}

} // namespace

TEST_F(OSSorterTest, FunctionsAreCalledStepByStepWithTheirContext) {
    Random random;
    NSMutableArray *const array = NSMutableArray::array();
    for (int i = 0; i < 300; ++i)
        array->addObject(NSString::stringWith(randomText(random, random.below(8), kPieces)));
    std::vector<Pair> items;
    Log unused;
    for (id element : *array) {
        const id value = lengthOf(element, &unused);
        items.push_back({element, value ? value : QBNil::value()});
    }
    OSSorter *const both = OSSorter::sorterForLanguage("de_DE"_ns, lengthOf, loggedFancy);
    for (int direction : {kAscending, kDescending}) {
        Log log;
        NSArray *const sorted = direction == kAscending ? both->sortArrayAscending(array, &log)
                                                        : both->sortArrayDescending(array, &log);
        std::vector<Pair> comparisons;
        expectObjects(sorted, sortedBySwaps(items, direction, [&](id a, id b) {
                          comparisons.emplace_back(a, b);
                          return fancy(a, b);
                      }));
        EXPECT_EQ(log.values, std::vector<id>(array->view().begin(), array->view().end()));
        EXPECT_EQ(log.comparisons, comparisons);
    }
}

TEST_F(OSSorterTest, TheCollationIsThatOfTheEnvironmentAfterwards) {
    NEED_LOCALE("de_DE.UTF-8");
    NSArray *const array = NSArray::arrayWithObjects("b"_ns, "a"_ns);
    const auto collation = [] { return std::string(std::setlocale(LC_COLLATE, nullptr)); };
    ::setenv("LC_ALL", "C.UTF-8", 1);
    std::setlocale(LC_COLLATE, "C");
    OSSorter::sorterForLanguage("de_DE"_ns)->sortArrayAscending(NSArray::arrayWithObject("a"_ns));
    EXPECT_EQ(collation(), "C"); // nothing to sort
    const auto fail = [](id, id, void *) -> std::int32_t {
        throw InvalidArgumentException(std::string(std::setlocale(LC_COLLATE, nullptr)));
    };
    EXPECT_REASON(OSSorter::sorterForLanguageCompareFunction("de_DE"_ns, fail)->sortArrayAscending(array),
                  "de_DE.utf-8");
    EXPECT_EQ(collation(), "C.UTF-8");
    for (const char *const locale : {"C.UTF-8", "xx_YY"}) { // which the machine does not have
        ::setenv("LC_ALL", locale, 1);
        OSSorter::sorterForLanguage("de_DE"_ns)->sortArrayAscending(array);
        EXPECT_REASON(
            OSSorter::sorterForLanguageCompareFunction("nowhere"_ns, fail)->sortArrayAscending(array),
            *locale == 'C' ? locale : "C");
        EXPECT_EQ(collation(), *locale == 'C' ? locale : "C");
    }
}
