#include "Text/Collation.h"

#include "RandomText.h"
#include "support/Locales.h"

#include <clocale>
#include <cstring>

namespace text = qb::text;

const std::string kPieces[] = {"a", "b", "c", "h", "s",  "z",        "d",    "A",    "B",    "H",
                               "0", "9", "-", " ", "_",  "/",        "ä",    "ß",    "æ",    "é",
                               "Ö", "ø", "'", "€", "日", "\xCC\x81", "\x01", "\xC3", "\xFF", "\x80"};

struct CollationTest : testing::Test {
    ~CollationTest() override { std::setlocale(LC_COLLATE, "C"); }
};

static std::string firstLevel(const std::string &words) {
    std::vector<char> keys;
    text::CollationKeys::inForce()->appendFirstLevel(words, keys);
    return {keys.begin(), keys.end()};
}

// "(none)" for a text without one.
static std::string nextLevels(const std::string &words) {
    std::vector<char> keys;
    return text::CollationKeys::inForce()->appendNextLevels(words, keys)
               ? std::string(keys.begin(), keys.end())
               : "(none)";
}

static int sign(int order) {
    return (order > 0) - (order < 0);
}

// Keys may leave the order open.
static void expectOrder(const std::string &a, const std::string &b) {
    const int byFirst = firstLevel(a).compare(firstLevel(b));
    const bool haveNext = nextLevels(a) != "(none)" && nextLevels(b) != "(none)";
    const int byKeys = sign(byFirst != 0 || !haveNext ? byFirst : nextLevels(a).compare(nextLevels(b)));
    EXPECT_TRUE(byKeys == 0 || byKeys == sign(std::strcoll(a.c_str(), b.c_str()))) << a << " | " << b;
}

TEST_F(CollationTest, KeysOrderAsTheCLibraryDoesInEachLanguage) {
    Random random;
    for (const char *name : {"C.UTF-8", "de_DE.UTF-8", "de_DE.ISO-8859-1", "cs_CZ.UTF-8", "fr_CA.UTF-8"}) {
        NEED_LOCALE(name);
        std::setlocale(LC_COLLATE, name);
        SCOPED_TRACE(name);
        for (int i = 0; i < 20000; ++i) {
            const std::string stem = randomText(random, random.below(4), kPieces);
            expectOrder(stem + randomText(random, random.below(6), kPieces),
                        stem + randomText(random, random.below(6), kPieces));
        }
    }
}

TEST_F(CollationTest, PlainCharactersAreLearned) {
    NEED_LOCALE("de_DE.UTF-8");
    std::setlocale(LC_COLLATE, "de_DE.UTF-8");
    EXPECT_EQ(firstLevel("Straße"), firstLevel("st-rä s-se"));
    EXPECT_EQ(firstLevel("Straße").size(), 7u); // of one byte a letter: nothing cost a `strxfrm`
    EXPECT_LT(nextLevels("A"), nextLevels("ä"));
    for (const char *other : {"a b", "a\xC3", "日", "'"}) // some hold what the first level ignores
        EXPECT_EQ(nextLevels(other), "(none)");
}
