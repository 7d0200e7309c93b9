#include "PatternCheck.h"

#include "PatternDelimiter.h"
#include "PatternShape.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
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
// With so many that it may be at, the matcher takes half a second and 50 MB for a KiB of text; what it keeps
// of them it keeps for each side of an anchor.
constexpr PatternCount kMostOpenNodes = 8000;
constexpr PatternCount kOpenAnchorCost = 4;
// Each free node of a stretch costs the compiler some 130 bytes of stack.
constexpr PatternCount kLongestStretch = 1000;
constexpr PatternCount kMostLinks = 1'000'000;
constexpr PatternCount kMostWays = 4096;
// A word boundary is two. With a few more the compiler takes seconds, with some more than those it does not
// end.
constexpr PatternCount kMostLoopedAnchors = 2;
constexpr unsigned kMostRepeatsInRow = 8;
// Each one that is met costs the matcher some 600 bytes of stack.
constexpr PatternCount kMostReferences = 64;
// Beside back references: what is between a group and its reference is gone along each time.
constexpr PatternCount kMostNodesToTry = 200;
// What the matcher tries at a place of the text for all back references.
constexpr PatternCount kMostTrials = 80'000;
constexpr PatternCount kMostOpenEnds = 1;
// Where it seeks the places of groups, the matcher may go all ways.
constexpr PatternCount kMostReadings = 10'000;
// Bytes of text. For each end that a group of any length may have the matcher keeps what it has found up to
// there, some 8 bytes for each two places. Where two things depend on the text's length, or much is tried,
// it goes over as many bytes for each pair of places: the time grows with the cube.
constexpr std::size_t kLongestForGroups = 4096;
constexpr std::size_t kLongestWhereTriedOften = 1024;
constexpr PatternCount kMostTrialsInLongTexts = 10'000;

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

char takeByte(std::string_view &rest) {
    const char byte = rest.front();
    rest.remove_prefix(1);
    return byte;
}

// Takes a character of the process's character set, as the compiler does: those of several bytes are one
// part, and may have bytes that would mean something else by themselves. An invalid byte is a character.
std::string_view takeCharacter(std::string_view &rest) {
    std::size_t length = 1;
    if (static_cast<unsigned char>(rest.front()) >= 0x80 && MB_CUR_MAX > 1) {
        std::mbstate_t state{};
        length = std::mbrlen(rest.data(), rest.size(), &state);
        if (length > rest.size()) // neither valid nor complete
            length = 1;
    }
    const std::string_view character = rest.substr(0, length);
    rest.remove_prefix(length);
    return character;
}

// Takes the rest of a bracket expression, to its end or, without one, the pattern's. A "]" is an element
// where it stands first, and inside of "[. .]", "[= =]" and "[: :]"; a backslash is one everywhere.
void skipBracketExpression(std::string_view &rest) {
    if (rest.starts_with('^'))
        rest.remove_prefix(1);
    if (rest.starts_with(']'))
        rest.remove_prefix(1);
    while (!rest.empty()) {
        const char byte = takeCharacter(rest).front();
        if (byte == ']')
            return;
        if (byte == '[' && !rest.empty() && std::strchr(".=:", rest.front())) {
            const char ending[] = {takeByte(rest), ']', '\0'};
            const std::size_t end = rest.find(ending);
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 2);
        }
    }
}

bool isReference(char escaped) {
    return escaped >= '1' && escaped <= '9';
}

/// The groups that back references name, by their numbers.
class References {
public:
    explicit References(std::string_view rest) {
        while (!rest.empty()) {
            const char byte = takeCharacter(rest).front();
            if (byte == '[')
                skipBracketExpression(rest);
            else if (byte == '\\' && !rest.empty())
                note(takeCharacter(rest).front());
        }
    }

    bool areThere() const { return std::find(isNamed_.begin(), isNamed_.end(), true) != isNamed_.end(); }
    bool name(std::size_t group) const { return group < isNamed_.size() && isNamed_[group]; }

private:
    void note(char escaped) {
        if (isReference(escaped))
            isNamed_[static_cast<std::size_t>(escaped - '0')] = true;
    }

    std::array<bool, 10> isNamed_{};
};

/// Goes over a pattern as the compiler will do, adding up its shape.
class PatternScanner {
public:
    PatternScanner(std::string_view pattern, bool isByLines) : rest_(pattern), references_(pattern) {
        beginsAnywhere_ =
            isByLines || !pattern.starts_with('^') || (pattern.size() > 1 && std::strchr("*?{+", pattern[1]));
    }

    PatternLimits limits() {
        if (rest_.size() > kLongestPattern)
            return {.fault = "it is too long"};
        while (!rest_.empty() && !fault_)
            takeNext();
        // The compiler has read groups that lack their end, before it refuses them.
        while (levels_.size() > 1 && !fault_)
            closeGroup();
        beginsAnywhere_ |= level().hasBranches; // not all of them may begin with "^"
        finishBranch();
        if (!fault_ && references_.areThere())
            checkFreedom();
        return {.fault = fault_,
                .groupFault = groupCount_ == 0 ? nullptr : groupFault_,
                .hasReferences = references_.areThere(),
                .longestText = longestText()};
    }

private:
    /// What stands between a pair of parentheses, or outside of all.
    struct Level {
        PatternShape branches;       // those before the current one
        PatternShape branch;         // without its last part
        PatternShape part;           // what a repeat operator would repeat
        std::size_t group = 0;       // its number; 0 outside of all
        PatternCount choicesInFront; // of the group, if it is referred to
        bool hasBranches = false;
    };

    Level &level() { return levels_.back(); }

    void takeNext() {
        const std::string_view character = takeCharacter(rest_);
        const char byte = character.front();
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
            takeSimplePart(character);
    }

    void takeSimplePart(std::string_view character) {
        addPart(simplePart(character));
        hasReferenceInFront_ |= PatternCount() < level().part.references;
        simplePart_ = {character.data(), rest_.data()};
    }

    PatternShape simplePart(std::string_view character) {
        switch (character.front()) {
        case '[':
            skipBracketExpression(rest_);
            return characterSetShape();
        case '^':
        case '$':
            return anchorShape();
        case '.':
            return characterSetShape();
        case '\\':
            return rest_.empty() ? characterShape() : escapedPart(takeCharacter(rest_));
        default:
            return characterShape(character.size());
        }
    }

    static PatternShape escapedPart(std::string_view character) {
        if (isReference(character.front()))
            return referenceShape();
        switch (character.front()) {
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
            return characterShape(character.size());
        }
    }

    void addPart(const PatternShape &part) {
        level().branch = checked(sequence(level().branch, level().part));
        level().part = part;
        simplePart_ = {};
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
        else if (references_.name(groupCount_) && hasOpenEnd_)
            fault_ = kRepeatedGroup;
        else
            pushLevel();
    }

    void pushLevel() {
        const PatternCount choices = references_.name(groupCount_) ? choicesInFront() : 0;
        levels_.emplace_back().group = groupCount_;
        level().choicesInFront = choices;
    }

    /// How many choices decide where the next part begins.
    PatternCount choicesInFront() const {
        PatternCount choices;
        for (const Level &level : levels_)
            choices = choices + level.branch.choices + level.part.choices;
        return choices;
    }

    void closeGroup() {
        finishBranch();
        PatternShape whole = group(level().branches);
        if (references_.name(level().group)) {
            if (PatternCount() < whole.allAnchors)
                fault_ = "a group that is referred to has an anchor"; // which is passed over for groups
            whole.captures = whole.captures + 1;
            whole.hasIdleCapture |= whole.isNullable;
            hasEndlessCapture_ |= whole.hasEndlessRepeat;
            hasChoiceInFront_ |= PatternCount() < level().choicesInFront;
            const PatternCount begins = level().choicesInFront + 1;
            captureTrials_ = captureTrials_ * begins * begins * (whole.choices + 1);
        }
        levels_.pop_back();
        addPart(checked(whole));
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
            if (!takeInterval(interval)) { // the compiler refuses it here, unless it takes what is escaped
                if (rest_.find('\\') < rest_.find('}'))
                    fault_ = "an interval has an escaped character";
                rest_ = {};
                return;
            }
        }
        const bool isAtMostOnce = !interval.isEndless && interval.high <= 1;
        const bool isOnce = isAtMostOnce && !level().part.isNullable;
        if (interval.isEndless && PatternCount() < level().part.references)
            fault_ = "a back reference is repeated without end";
        else if (!isOnce && PatternCount() < level().part.captures)
            fault_ = kRepeatedGroup; // the matcher forgets which of them it was
        else if (!isAtMostOnce && references_.areThere() && PatternCount() < level().part.allAnchors)
            fault_ = "an anchor is repeated beside back references"; // which is passed over for groups
        else
            level().part = repeated(level().part, interval);
        if (level().part.hasIdleLoop && PatternCount() < level().part.allAnchors)
            groupFault_ = kIdleLoop;
    }

    /// The loop of a repeat without end.
    PatternShape endless(const PatternShape &part) {
        PatternShape shape = loop(part);
        shape.choices = part.choices;
        if (PatternCount(1) < part.ways.through)
            groupFault_ = kIdleLoop;
        if (hasReferenceInFront_ || !isDelimited(simplePart_, rest_)) { // the matcher comes from behind, too
            shape.openEnds = shape.openEnds + 1;
            hasOpenEnd_ = true;
        }
        return shape;
    }

    std::size_t longestText() const {
        const PatternShape &whole = levels_.back().branches;
        if (!references_.areThere() || !whole.hasEndlessRepeat)
            return INT_MAX;
        const bool isComparedOften =
            (hasEndlessCapture_ || hasOpenEnd_) && PatternCount(1) < whole.references;
        if (beginsAnywhere_ || isComparedOften || kMostTrialsInLongTexts < trials(whole))
            return kLongestWhereTriedOften;
        return hasEndlessCapture_ ? kLongestForGroups : INT_MAX;
    }

    /// Checks how much of a pattern with back references is open.
    void checkFreedom() {
        const PatternShape &whole = level().branches;
        const bool isOpen = hasOpenEnd_ || (hasEndlessCapture_ && beginsAnywhere_);
        if (kMostNodesToTry < whole.nodes)
            fault_ = "it is too large beside back references";
        else if (kMostOpenEnds < whole.openEnds + (beginsAnywhere_ ? 1 : 0) ||
                 (hasChoiceInFront_ && isOpen) || (hasEndlessCapture_ && whole.hasSkippedReference))
            fault_ = kTooOpen;
        else if (kMostReadings < whole.readings)
            fault_ = "it can be read in too many ways beside back references";
        else if (kMostTrials < trials(whole))
            fault_ = "it has too many choices beside back references";
        else if (whole.hasIdleLoop)
            fault_ = "an endless repeat may match nothing beside back references";
        else if (whole.hasSkippedCapture) // the matcher takes nothing for it where it was not there
            fault_ = "a group that is referred to may match nothing or not be there";
        else if (whole.hasIdleCapture && (whole.captures < whole.references || whole.hasSkippedAnchor))
            fault_ = kIdleCapture; // the matcher loses what it has found when it looks for groups
    }

    // Fitted to what takes about a second: each begin and end that a group may have is tried at each place
    // where a reference may stand, along all that is between them.
    PatternCount trials(const PatternShape &whole) const {
        PatternCount trials = captureTrials_ * whole.nodes;
        for (PatternCount i = 0; i < whole.references; i = i + 1)
            trials = trials * (whole.choices + 1);
        return trials;
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
            number = std::min<std::uint32_t>(number * 10 + static_cast<std::uint32_t>(takeByte(rest_) - '0'),
                                             kMostCopies + 1);
        return true;
    }

    PatternShape repeated(const PatternShape &part, const Interval &interval) {
        if (!(PatternCount() < part.nodes)) // the compiler will refuse to repeat nothing
            return part;
        PatternShape copies;
        copies.nodes = interval.low == 0 ? part.nodes : 0; // made, if only to be thrown away
        for (std::uint32_t count = 0; count < interval.low && !fault_; ++count)
            copies = checked(sequence(copies, part));
        if (interval.isEndless)
            return opened(checked(sequence(copies, endless(part))), part);
        // The compiler nests those that may be left out, as in "((a?a)?a)?": one way for each count.
        const PatternCount needed = copies.readings;
        PatternCount readings = 1;
        for (std::uint32_t count = interval.low; count < interval.high && !fault_; ++count) {
            copies = checked(sequence(copies, choice(part, PatternShape())));
            readings = readings * part.readings + 1;
        }
        copies.readings = needed * readings;
        return interval.high > 1 ? opened(copies, part) : copies;
    }

    /// Returns the shape of the part's copies, with their nodes open if the part may be of several lengths.
    PatternShape opened(PatternShape copies, const PatternShape &part) {
        if (PatternCount() < part.choices || part.hasEndlessRepeat)
            copies.openNodes = copies.nodes * (PatternCount() < part.allAnchors ? kOpenAnchorCost : 1);
        return checked(copies);
    }

    const PatternShape &checked(const PatternShape &shape) {
        if (kMostNodes < shape.nodes)
            fault_ = "it is too large when its repeats are multiplied";
        else if (kMostOpenNodes < shape.openNodes)
            fault_ = "too much of it may vary when its repeats are multiplied";
        else if (kLongestStretch < shape.stretch || kMostLinks < shape.links || kMostWays < shape.ways.most)
            fault_ = "too many of its parts in a row may match nothing";
        else if (kMostLoopedAnchors < shape.loopedAnchors)
            fault_ = "too many anchors stand in a repeat that may match nothing";
        else if (kMostReferences < shape.references)
            fault_ = "it has too many back references";
        return shape;
    }

    static constexpr const char *kRepeatedGroup =
        "a group that is referred to is repeated, or stands behind an endless repeat";

    static constexpr const char *kIdleCapture =
        "a group that is referred to may match nothing, and is referred "
        "to twice or beside an anchor that may be left out";

    static constexpr const char *kTooOpen = "too much of it may vary beside back references";

    static constexpr const char *kIdleLoop = "its groups can't be found where an endless repeat may match "
                                             "nothing in several ways or beside an anchor";

    std::string_view rest_;
    const References references_;
    bool beginsAnywhere_;
    bool hasReferenceInFront_ = false;
    bool hasOpenEnd_ = false;
    bool hasEndlessCapture_ = false; // a group that is referred to has an endless repeat,
    bool hasChoiceInFront_ = false;  // or a choice in front
    PatternCount captureTrials_ = 1; // for the begins and ends of groups that are referred to
    std::string_view simplePart_;    // its text, when the latest part is no group and not repeated
    std::vector<Level> levels_ = std::vector<Level>(1);
    std::size_t groupCount_ = 0;
    unsigned repeatsInRow_ = 0;
    const char *fault_ = nullptr;
    const char *groupFault_ = nullptr;
};

} // namespace

PatternLimits checkPattern(const char *pattern, bool isByLines) {
    return PatternScanner({pattern, ::strnlen(pattern, kLongestPattern + 1)}, isByLines).limits();
}

} // namespace qb::text
