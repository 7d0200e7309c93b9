// How large and how entangled a part of a regular expression becomes when it is compiled.
#ifndef QBFOUNDATION_TEXT_PATTERNSHAPE_H
#define QBFOUNDATION_TEXT_PATTERNSHAPE_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// A count that stops where every limit has long been passed.
class PatternCount {
public:
    constexpr PatternCount(std::uint64_t value = 0)
        : value_(value < kMost ? static_cast<std::uint32_t>(value) : kMost) {}

    friend constexpr PatternCount operator+(PatternCount a, PatternCount b) {
        return std::uint64_t{a.value_} + b.value_;
    }
    friend constexpr PatternCount operator*(PatternCount a, PatternCount b) {
        return std::uint64_t{a.value_} * b.value_;
    }
    friend constexpr bool operator<(PatternCount a, PatternCount b) { return a.value_ < b.value_; }

private:
    static constexpr std::uint32_t kMost = UINT32_MAX;

    std::uint32_t value_;
};

/// The compiled form of a part of a pattern: an automaton whose nodes either take a character or are free,
/// that is, passed without one. The compiler finds for each node all those that lie behind it free of charge,
/// by recursion, so that long stretches of free nodes cost stack, many links between them memory and time.
/// It goes over all ways through a stretch that leads to a loop. Behind an anchor, a free node that asks for
/// a place, it copies the stretch; a loop is copied for all that the anchors in it may ask for together.
struct PatternShape {
    /// Ways through free nodes: the most that lead from one node to another.
    struct Ways {
        PatternCount in = 1;      // from the beginning to a node
        PatternCount out = 1;     // from a node to the end
        PatternCount through = 1; // from the beginning to the end
        PatternCount most = 1;    // between any two nodes
    };

    PatternCount nodes;
    PatternCount entry;   // free nodes that are reached from the beginning
    PatternCount exit;    // free nodes from which the end is reached
    PatternCount stretch; // the most free nodes that are connected
    PatternCount anchors; // anchors from which the end is reached
    PatternCount allAnchors;
    PatternCount loopedAnchors; // the most in one loop that may be gone through without a character
    PatternCount copies;        // nodes copied for anchors from which the end is reached
    PatternCount links;         // pairs of connected nodes; a copied node counts for many
    PatternCount references;    // back references
    PatternCount captures;      // groups that back references name
    PatternCount choices;       // between branches, and whether a repeat that ends goes on
    PatternCount openNodes;     // of repeats of what varies in length: the matcher may be at all of them
    PatternCount openEnds;      // endless repeats of which nothing says where they end
    PatternCount readings = 1;  // ways through it, endless repeats gone through as often as the text says
    Ways ways;
    bool isNullable = true;           // the end is reached from the beginning
    bool leadsToLoop = false;         // a loop that needs no character is reached from the beginning
    bool hasIdleLoop = false;         // one that may be gone through without a character
    bool hasEndlessRepeat = false;    // a loop of any kind
    bool hasSkippedAnchor = false;    // a way leads past an anchor
    bool hasSkippedReference = false; // one past a back reference, but not past its group
    bool hasIdleCapture = false;      // a group that a back reference names may match nothing,
    bool hasSkippedCapture = false;   // and one way leads past it
};

/// Return the shapes of the simplest parts. Other than these, `PatternShape()` is that of nothing at all.
PatternShape characterShape(std::size_t bytes = 1);
PatternShape characterSetShape();
PatternShape anchorShape();
PatternShape wordBoundaryShape();
PatternShape referenceShape();

/// Returns the shape of one part behind the other.
PatternShape sequence(const PatternShape &first, const PatternShape &second);
/// Returns the shape of a choice between both.
PatternShape choice(const PatternShape &first, const PatternShape &second);
/// Returns the shape of the part in parentheses.
PatternShape group(const PatternShape &part);
/// Returns the shape of the part any number of times.
PatternShape loop(const PatternShape &part);

} // namespace qb::text

#endif
