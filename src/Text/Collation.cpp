#include "Text/Collation.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qb::text {

namespace {

// The characters to learn. Not among them are apostrophes, with which languages write letters of their own
// ("c'h" is one in Breton).
constexpr std::string_view kCandidates =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 -._/";

constexpr std::uint8_t kNoWeight = 0; // the character is ignored on the first level
constexpr std::uint8_t kNotPlain = 255;

// The end of a level in a `strxfrm` key, the smallest byte in it.
constexpr char kLevelEnd = 1;

// Returns the first level of the text's `strxfrm` key, which stands in `buffer`.
std::string_view firstLevelOf(const char *text, std::vector<char> &buffer) {
    std::size_t length = std::strxfrm(buffer.data(), text, buffer.size());
    if (length >= buffer.size()) {
        buffer.resize(length + 1);
        length = std::strxfrm(buffer.data(), text, buffer.size());
    }
    const std::string_view key(buffer.data(), length);
    return key.substr(0, key.find(kLevelEnd));
}

// What the locale makes of the candidates, one by one and beside each other.
class Lesson {
public:
    Lesson() {
        for (std::size_t i = 0; i < kCandidates.size(); ++i)
            alone_[i] = firstLevelOf(std::string(1, kCandidates[i]).c_str(), buffer_);
        isPlain_.fill(true);
        for (std::size_t i = 0; i < kCandidates.size(); ++i)
            if (!staysAloneBesideAll(i))
                findPartners(i);
    }

    // The first level of a character; null when that depends on what stands beside it.
    const std::string *weightOf(std::size_t index) const {
        return isPlain_[index] ? &alone_[index] : nullptr;
    }

private:
    using Characters = std::array<bool, kCandidates.size()>;

    bool isJoined(const std::string &text, const std::string &expected) {
        return firstLevelOf(text.c_str(), buffer_) != expected;
    }

    bool staysAloneBesideAll(std::size_t index) {
        std::string text, expected;
        for (std::size_t i = 0; i < kCandidates.size(); ++i) {
            text += {kCandidates[index], kCandidates[i]};
            expected += alone_[index] + alone_[i];
        }
        return !isJoined(text, expected);
    }

    // Some languages have letters of two, such as "ch".
    void findPartners(std::size_t index) {
        isPlain_[index] = false;
        for (std::size_t i = 0; i < kCandidates.size(); ++i)
            if (isJoined({kCandidates[index], kCandidates[i]}, alone_[index] + alone_[i]))
                isPlain_[i] = false;
    }

    std::array<std::string, kCandidates.size()> alone_;
    Characters isPlain_;
    std::vector<char> buffer_ = std::vector<char>(64);
};

} // namespace

CollationKeys::CollationKeys() : buffer_(1024) {
    const Lesson lesson;
    std::vector<std::string> different;
    for (std::size_t i = 0; i < kCandidates.size(); ++i)
        if (const std::string *weight = lesson.weightOf(i); weight && !weight->empty())
            different.push_back(*weight);
    std::sort(different.begin(), different.end());
    // A character that counts as several others ("w" as "vv") has no code of its own.
    const auto beginsWith = [](const std::string &a, const std::string &b) { return b.starts_with(a); };
    different.erase(std::unique(different.begin(), different.end(), beginsWith), different.end());

    std::fill(std::begin(weightsUpTo_), std::end(weightsUpTo_), 0);
    for (const std::string &bytes : different) {
        weights_.push_back({bytes, static_cast<std::uint8_t>(2 * weights_.size() + 2)});
        weightsUpTo_[static_cast<unsigned char>(bytes[0])] = static_cast<std::uint8_t>(weights_.size());
    }
    for (std::size_t byte = 1; byte < 256; ++byte)
        weightsUpTo_[byte] = std::max(weightsUpTo_[byte], weightsUpTo_[byte - 1]);

    std::fill(std::begin(codes_), std::end(codes_), kNotPlain);
    for (std::size_t i = 0; i < kCandidates.size(); ++i) {
        const std::string *const weight = lesson.weightOf(i);
        std::uint8_t &code = codes_[static_cast<unsigned char>(kCandidates[i])];
        if (weight && weight->empty())
            code = kNoWeight;
        for (const Weight &known : weights_)
            if (weight && *weight == known.bytes)
                code = known.code;
    }
}

void CollationKeys::append(std::string_view text, std::vector<char> &keys) {
    if (!appendPlain(text, keys))
        appendTransformed(firstLevelOf(text.data(), buffer_), keys);
}

// Returns false, with nothing appended, for a text with other than plain characters.
bool CollationKeys::appendPlain(std::string_view text, std::vector<char> &keys) const {
    const std::size_t begin = keys.size();
    keys.resize(begin + text.size());
    char *end = keys.data() + begin;
    bool isPlain = true;
    for (const char character : text) {
        const std::uint8_t code = codes_[static_cast<unsigned char>(character)];
        isPlain = isPlain && code != kNotPlain;
        *end = static_cast<char>(code);
        end += code != kNoWeight;
    }
    keys.resize(isPlain ? static_cast<std::size_t>(end - keys.data()) : begin);
    return isPlain;
}

// Up to the first unknown weight, codes; from there on, behind the code for its place between the known ones,
// the bytes as they are. So two keys are of one form as far as they are the same.
void CollationKeys::appendTransformed(std::string_view firstLevel, std::vector<char> &keys) const {
    while (!firstLevel.empty()) {
        const auto byte = static_cast<unsigned char>(firstLevel[0]);
        std::size_t below = byte == 0 ? 0 : weightsUpTo_[byte - 1];
        while (below < weightsUpTo_[byte] && weights_[below].bytes <= firstLevel)
            ++below;
        const Weight *const known = below > 0 ? &weights_[below - 1] : nullptr;
        if (!known || !firstLevel.starts_with(known->bytes)) {
            keys.push_back(static_cast<char>(2 * below + 1));
            keys.insert(keys.end(), firstLevel.begin(), firstLevel.end());
            return;
        }
        keys.push_back(static_cast<char>(known->code));
        firstLevel.remove_prefix(known->bytes.size());
    }
}

} // namespace qb::text
