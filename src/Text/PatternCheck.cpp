#include "PatternCheck.h"

#include "PatternShape.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace qb::text {

namespace {

// One level of groups costs the compiler some 700 bytes of stack.
constexpr std::size_t kDeepestGroups = 200;
// One repeat of any length that the compiler knows, and as much again.
constexpr std::uint32_t kMostCopies = 32767;
constexpr PatternCount kMostNodes = 40000;
// Each free node of a stretch costs the compiler some 130 bytes of stack.
constexpr PatternCount kLongestStretch = 1000;
constexpr PatternCount kMostLinks = 1'000'000;
constexpr PatternCount kMostWays = 4096;
constexpr unsigned kMostRepeatsInRow = 8;
// Each one that is met costs the matcher some 600 bytes of stack.
constexpr PatternCount kMostReferences = 64;

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

/// Goes over a pattern as the compiler will do, adding up its shape.
class PatternScanner {
public:
    explicit PatternScanner(std::string_view pattern) : rest_(pattern) {}

    const char *fault() {
        if (rest_.size() > kLongestPattern)
            return "it is too long";
        while (!rest_.empty() && !fault_)
            takeNext();
        // The compiler has read groups that lack their end, before it refuses them.
        while (levels_.size() > 1 && !fault_)
            closeGroup();
        finishBranch();
        return fault_;
    }

private:
    /// What stands between a pair of parentheses, or outside of all.
    struct Level {
        PatternShape branches; // those before the current one
        PatternShape branch;   // without its last part
        PatternShape part;     // what a repeat operator would repeat
        bool hasBranches = false;
    };

    Level &level() { return levels_.back(); }

    char takeByte() {
        const char byte = rest_.front();
        rest_.remove_prefix(1);
        return byte;
    }

    void takeNext() {
        const char byte = takeByte();
        const bool isRepeat = byte == '*' || byte == '+' || byte == '?' || byte == '{';
        repeatsInRow_ = isRepeat ? repeatsInRow_ + 1 : 0;
        if (repeatsInRow_ > kMostRepeatsInRow)
            fault_ = "too many repeat operators follow one another";
        else if (isRepeat)
            takeRepeat(byte);
        else if (byte == '(')
            openGroup();
        else if (byte == ')' && levels_.size() > 1)
            closeGroup();
        else if (byte == '|')
            finishBranch();
        else
            addPart(simplePart(byte));
    }

    PatternShape simplePart(char byte) {
        switch (byte) {
        case '[':
            skipBracketExpression();
            return characterSetShape();
        case '^':
        case '$':
            return anchorShape();
        case '.':
            return characterSetShape();
        case '\\':
            return rest_.empty() ? characterShape() : escapedPart(takeByte());
        default:
            return characterShape();
        }
    }

    static PatternShape escapedPart(char byte) {
        if (byte >= '1' && byte <= '9')
            return referenceShape();
        switch (byte) {
        case 'w':
        case 'W':
        case 's':
        case 'S':
            return characterSetShape();
        case 'b':
        case 'B':
            return wordBoundaryShape();
        case '<':
        case '>':
        case '`':
        case '\'':
            return anchorShape();
        default:
            return characterShape();
        }
    }

    /// A "]" is an element where it stands first, and inside of "[. .]", "[= =]" and "[: :]".
    void skipBracketExpression() {
        if (rest_.starts_with('^'))
            rest_.remove_prefix(1);
        if (rest_.starts_with(']'))
            rest_.remove_prefix(1);
        while (!rest_.empty()) {
            const char byte = takeByte();
            if (byte == ']')
                return;
            if (byte == '[' && !rest_.empty() && std::strchr(".=:", rest_.front())) {
                const char ending[] = {takeByte(), ']', '\0'};
                const std::size_t end = rest_.find(ending);
                rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 2);
            }
        }
    }

    void addPart(const PatternShape &part) {
        level().branch = checked(sequence(level().branch, level().part));
        level().part = part;
    }

    void finishBranch() {
        addPart(PatternShape());
        level().branches =
            level().hasBranches ? checked(choice(level().branches, level().branch)) : level().branch;
        level().hasBranches = true;
        level().branch = PatternShape();
    }

    void openGroup() {
        if (levels_.size() > kDeepestGroups)
            fault_ = "its groups are nested too deeply";
        else if (++groupCount_ > kMostPatternGroups)
            fault_ = "it has too many groups";
        else
            levels_.emplace_back();
    }

    void closeGroup() {
        finishBranch();
        const PatternShape inside = level().branches;
        levels_.pop_back();
        addPart(checked(group(inside)));
    }

    void takeRepeat(char byte) {
        Interval interval;
        switch (byte) {
        case '*':
            break;
        case '+':
            interval.low = 1;
            break;
        case '?':
            interval = {0, 1, /*isEndless=*/false};
            break;
        default:
            if (!takeInterval(interval)) {
                rest_ = {}; // the compiler refuses it here
                return;
            }
        }
        if (interval.isEndless && PatternCount() < level().part.references)
            fault_ = "a back reference is repeated without end";
        else
            level().part = repeated(level().part, interval);
    }

    /// How often a part is repeated.
    struct Interval {
        std::uint32_t low = 0;
        std::uint32_t high = 0; // not less than `low`, unless it is endless
        bool isEndless = true;
    };

    /// Takes what follows a "{", with its "}". Returns false when it is malformed.
    bool takeInterval(Interval &interval) {
        const bool hasLow = takeNumber(interval.low);
        if (rest_.starts_with(',')) {
            rest_.remove_prefix(1);
            interval.isEndless = !takeNumber(interval.high);
        } else if (hasLow) {
            interval.isEndless = false;
            interval.high = interval.low;
        }
        const bool isOrdered =
            interval.low <= kMostCopies &&
            (interval.isEndless || (interval.low <= interval.high && interval.high <= kMostCopies));
        if (!rest_.starts_with('}') || !isOrdered)
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// Returns false when there is no digit.
    bool takeNumber(std::uint32_t &number) {
        if (rest_.empty() || !isDigit(rest_.front()))
            return false;
        number = 0;
        while (!rest_.empty() && isDigit(rest_.front()))
            number = std::min<std::uint32_t>(number * 10 + static_cast<std::uint32_t>(takeByte() - '0'),
                                             kMostCopies + 1);
        return true;
    }

    PatternShape repeated(const PatternShape &part, const Interval &interval) {
        PatternShape copies;
        copies.nodes = interval.low == 0 ? part.nodes : 0; // made, if only to be thrown away
        for (std::uint32_t count = 0; count < interval.low && !fault_; ++count)
            copies = checked(sequence(copies, part));
        if (interval.isEndless)
            return checked(sequence(copies, loop(part)));
        for (std::uint32_t count = interval.low; count < interval.high && !fault_; ++count)
            copies = checked(sequence(copies, choice(part, PatternShape())));
        return copies;
    }

    const PatternShape &checked(const PatternShape &shape) {
        if (kMostNodes < shape.nodes)
            fault_ = "it is too large when its repeats are multiplied";
        else if (kLongestStretch < shape.stretch || kMostLinks < shape.links || kMostWays < shape.ways.most)
            fault_ = "too many of its parts in a row may match nothing";
        else if (kMostReferences < shape.references)
            fault_ = "it has too many back references";
        return shape;
    }

    std::string_view rest_;
    std::vector<Level> levels_ = std::vector<Level>(1);
    std::size_t groupCount_ = 0;
    unsigned repeatsInRow_ = 0;
    const char *fault_ = nullptr;
};

} // namespace

const char *patternFault(const char *pattern) {
    return PatternScanner({pattern, ::strnlen(pattern, kLongestPattern + 1)}).fault();
}

} // namespace qb::text
