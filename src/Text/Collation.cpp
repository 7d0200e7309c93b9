#include "Text/Collation.h"

#include "System/Iconv.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace qb::text {

namespace {

// The characters to learn. Not among them are apostrophes, with which languages write letters of their own
// ("c'h" is one in Breton). Those of UTF-8 are two others in other character sets, which does no harm.
constexpr std::string_view kSingle = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 -._/";
constexpr unsigned char kLead = 0xC3; // U+00C0 to U+00FF
constexpr unsigned char kFirstPaired = 0x80;
constexpr std::size_t kPairedCount = 64;
constexpr std::size_t kCount = kSingle.size() + kPairedCount;

constexpr std::uint8_t kNotPlain = 0x80;
constexpr std::uint8_t kUnlearned = kCount; // the place of what is none of the characters

// The end of a level in a `strxfrm` key, the smallest byte in it.
constexpr char kLevelEnd = 1;

std::string characterAt(std::size_t place) {
    if (place < kSingle.size())
        return {kSingle[place]};
    return {static_cast<char>(kLead), static_cast<char>(kFirstPaired + (place - kSingle.size()))};
}

// Returns the text's `strxfrm` key, which stands in `buffer`.
std::string_view transformed(const char *text, std::vector<char> &buffer) {
    std::size_t length = std::strxfrm(buffer.data(), text, buffer.size());
    if (length >= buffer.size()) {
        buffer.resize(length + 1);
        length = std::strxfrm(buffer.data(), text, buffer.size());
    }
    return {buffer.data(), length};
}

// Takes a level off the front of a key.
std::string_view takeLevel(std::string_view &key) {
    const std::string_view level = key.substr(0, key.find(kLevelEnd));
    key.remove_prefix(std::min(level.size() + 1, key.size()));
    return level;
}

struct Levels {
    std::array<std::string, 3> level;

    Levels &operator+=(const Levels &other) {
        for (std::size_t i = 0; i < level.size(); ++i)
            level[i] += other.level[i];
        return *this;
    }
};

// What the locale makes of the characters, one by one and beside each other.
class Lesson {
public:
    Lesson() {
        for (std::size_t i = 0; i < kCount; ++i)
            alone_[i] = levelsOf(characterAt(i));
        for (std::size_t i = 0; i < kCount; ++i)
            learnNeighbours(i);
    }

    // Whether a character counts the same on the first level, whatever stands beside it.
    bool isPlain(std::size_t place) const { return isPlain_[place]; }
    // Whether it does so on the next levels.
    bool areNextLevelsPlain() const { return areNextLevelsPlain_; }
    const Levels &alone(std::size_t place) const { return alone_[place]; }

private:
    Levels levelsOf(const std::string &text) {
        std::string_view key = transformed(text.c_str(), buffer_);
        Levels levels;
        for (std::string &level : levels.level)
            level = takeLevel(key);
        return levels;
    }

    // Some languages have letters of two characters, such as "ch". In others the accents count from the end.
    void learnNeighbours(std::size_t place) {
        std::string text;
        Levels expected;
        for (std::size_t i = 0; i < kCount; ++i) {
            text += characterAt(place) + characterAt(i);
            (expected += alone_[place]) += alone_[i];
        }
        const Levels actual = levelsOf(text);
        isPlain_[place] = actual.level[0] == expected.level[0];
        if (isPlain_[place] && actual.level != expected.level)
            areNextLevelsPlain_ = false;
    }

    std::array<Levels, kCount> alone_;
    std::array<bool, kCount> isPlain_{};
    bool areNextLevelsPlain_ = true;
    std::vector<char> buffer_ = std::vector<char>(1024);
};

} // namespace

std::shared_ptr<CollationKeys> CollationKeys::inForce() {
    static auto &last = *new std::shared_ptr<CollationKeys>; // never destroyed: sorting may go on at the end
    std::string characters;
    for (std::size_t i = 0; i < kCount; ++i)
        characters += characterAt(i);
    std::vector<char> buffer(4096);
    std::string sign(transformed(characters.c_str(), buffer));
    if (const char *const name = sys::setlocale(LC_COLLATE, nullptr))
        sign += name;
    if (!last || last->sign_ != sign)
        last.reset(new CollationKeys(std::move(sign)));
    return last;
}

CollationKeys::CollationKeys(std::string sign)
    : sign_(std::move(sign)), codes_(kCount + 1, {{}, kNotPlain}), buffer_(1024) {
    std::fill(std::begin(nextLevels_), std::end(nextLevels_), std::vector<std::string>(kCount + 1));
    std::fill(std::begin(single_), std::end(single_), kUnlearned);
    std::fill(std::begin(paired_), std::end(paired_), kUnlearned);
    for (std::size_t i = 0; i < kSingle.size(); ++i)
        single_[static_cast<unsigned char>(kSingle[i])] = static_cast<std::uint8_t>(i);
    for (std::size_t i = 0; i < kPairedCount; ++i)
        paired_[kFirstPaired + i] = static_cast<std::uint8_t>(kSingle.size() + i);

    const Lesson lesson;
    hasNextLevels_ = lesson.areNextLevelsPlain();
    std::vector<std::string> different;
    for (std::size_t i = 0; i < kCount; ++i)
        if (const std::string &level = lesson.alone(i).level[0]; lesson.isPlain(i) && !level.empty())
            different.push_back(level);
    setWeights(std::move(different));
    for (std::size_t i = 0; i < kCount; ++i) {
        const Levels &levels = lesson.alone(i);
        nextLevels_[0][i] = levels.level[1];
        nextLevels_[1][i] = levels.level[2];
        std::vector<char> codes;
        if (!lesson.isPlain(i) || !appendCodes(levels.level[0], codes) ||
            codes.size() > characterAt(i).size())
            continue;
        codes_[i].count = 0;
        for (const char code : codes)
            codes_[i].bytes[codes_[i].count++] = static_cast<std::uint8_t>(code);
    }
}

void CollationKeys::setWeights(std::vector<std::string> different) {
    std::sort(different.begin(), different.end());
    // A character that counts as several others ("ß" as "ss") has no weight of its own.
    const auto beginsWith = [](const std::string &a, const std::string &b) { return b.starts_with(a); };
    different.erase(std::unique(different.begin(), different.end(), beginsWith), different.end());
    different.resize(std::min<std::size_t>(different.size(), 126)); // whose codes fit into a byte
    std::fill(std::begin(weightsUpTo_), std::end(weightsUpTo_), 0);
    for (const std::string &bytes : different) {
        weights_.push_back({bytes, static_cast<std::uint8_t>(2 * weights_.size() + 2)});
        weightsUpTo_[static_cast<unsigned char>(bytes[0])] = static_cast<std::uint8_t>(weights_.size());
    }
    for (std::size_t byte = 1; byte < 256; ++byte)
        weightsUpTo_[byte] = std::max(weightsUpTo_[byte], weightsUpTo_[byte - 1]);
}

void CollationKeys::appendFirstLevel(std::string_view text, std::vector<char> &keys) {
    if (appendPlain(text, keys))
        return;
    std::string_view key = transformed(text.data(), buffer_);
    appendCodes(takeLevel(key), keys);
}

// Calls `use` with the places of a text's characters. Returns false for a text with others than plain ones.
template <class Use>
bool CollationKeys::forEachPlain(std::string_view text, Use use) const {
    std::uint8_t counts = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const std::uint8_t place =
            byte == kLead ? paired_[static_cast<unsigned char>(text.data()[++i])] : single_[byte];
        counts |= codes_[place].count;
        use(place);
    }
    return counts < kNotPlain;
}

// Returns false, with nothing appended, for a text with others than plain characters.
bool CollationKeys::appendPlain(std::string_view text, std::vector<char> &keys) const {
    const std::size_t begin = keys.size();
    keys.resize(begin + text.size() + sizeof(Codes::bytes)); // all are written, whatever their count
    char *end = keys.data() + begin;
    const bool isPlain = forEachPlain(text, [&end, this](std::uint8_t place) {
        std::memcpy(end, codes_[place].bytes, sizeof(Codes::bytes));
        end += codes_[place].count % kNotPlain;
    });
    keys.resize(isPlain ? static_cast<std::size_t>(end - keys.data()) : begin);
    return isPlain;
}

bool CollationKeys::appendNextLevels(std::string_view text, std::vector<char> &keys) const {
    bool isHeeded = hasNextLevels_;
    for (const std::vector<std::string> &levels : nextLevels_) {
        const bool isPlain = forEachPlain(text, [&](std::uint8_t place) {
            isHeeded = isHeeded && codes_[place].count != 0;
            keys.insert(keys.end(), levels[place].begin(), levels[place].end());
        });
        if (!isPlain || !isHeeded)
            return false;
        keys.push_back(kLevelEnd);
    }
    return true;
}

// Up to the first unknown weight, codes; from there on, behind the code for its place between the known ones,
// the bytes as they are. So two keys are of one form as far as they are the same. Returns whether all are
// known.
bool CollationKeys::appendCodes(std::string_view firstLevel, std::vector<char> &keys) const {
    while (!firstLevel.empty()) {
        const auto byte = static_cast<unsigned char>(firstLevel[0]);
        std::size_t below = byte == 0 ? 0 : weightsUpTo_[byte - 1];
        while (below < weightsUpTo_[byte] && weights_[below].bytes <= firstLevel)
            ++below;
        const Weight *const known = below > 0 ? &weights_[below - 1] : nullptr;
        if (!known || !firstLevel.starts_with(known->bytes)) {
            keys.push_back(static_cast<char>(2 * below + 1));
            keys.insert(keys.end(), firstLevel.begin(), firstLevel.end());
            return false;
        }
        keys.push_back(static_cast<char>(known->code));
        firstLevel.remove_prefix(known->bytes.size());
    }
    return true;
}

} // namespace qb::text
