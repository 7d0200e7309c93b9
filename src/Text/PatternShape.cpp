#include "PatternShape.h"

#include <algorithm>

namespace qb::text {

namespace {

// What a copied node costs more than a link.
constexpr PatternCount kCopyCost = 200;
// How much the length of a stretch counts that leads to a loop, and is gone over anew for each of its nodes.
constexpr PatternCount kLoopCost = 2;
// What a loop around an anchor costs more than a way: the copies of the loop lead into it as well.
constexpr PatternCount kAnchorLoopCost = 16;

PatternShape freeNode() {
    PatternShape shape;
    shape.nodes = shape.entry = shape.exit = shape.stretch = shape.links = 1;
    return shape;
}

PatternCount linksBetween(const PatternShape &first, const PatternShape &second) {
    return (first.exit + first.copies + kCopyCost * first.anchors) * second.entry;
}

/// Adds up what both have, one behind the other or side by side.
PatternShape sumOf(const PatternShape &first, const PatternShape &second) {
    PatternShape sum;
    sum.nodes = first.nodes + second.nodes;
    sum.allAnchors = first.allAnchors + second.allAnchors;
    sum.loopedAnchors = std::max(first.loopedAnchors, second.loopedAnchors);
    sum.links = first.links + second.links;
    sum.references = first.references + second.references;
    sum.captures = first.captures + second.captures;
    sum.choices = first.choices + second.choices;
    sum.openNodes = first.openNodes + second.openNodes;
    sum.openEnds = first.openEnds + second.openEnds;
    sum.hasIdleLoop = first.hasIdleLoop || second.hasIdleLoop;
    sum.hasEndlessRepeat = first.hasEndlessRepeat || second.hasEndlessRepeat;
    sum.hasSkippedAnchor = first.hasSkippedAnchor || second.hasSkippedAnchor;
    sum.hasSkippedReference = first.hasSkippedReference || second.hasSkippedReference;
    sum.hasIdleCapture = first.hasIdleCapture || second.hasIdleCapture;
    sum.hasSkippedCapture = first.hasSkippedCapture || second.hasSkippedCapture;
    return sum;
}

PatternShape::Ways waysThrough(const PatternShape &first, const PatternShape &second) {
    const PatternShape::Ways &a = first.ways, &b = second.ways;
    return {first.isNullable ? std::max(a.in, a.through * b.in) : a.in,
            second.isNullable ? std::max(b.out, a.out * b.through) : b.out, a.through * b.through,
            std::max({a.most, b.most, a.out * b.in})};
}

} // namespace

PatternShape characterShape(std::size_t bytes) {
    PatternShape shape;
    shape.nodes = bytes;
    shape.ways.through = 0;
    shape.isNullable = false;
    return shape;
}

PatternShape characterSetShape() {
    // Characters of several bytes stand apart from the others.
    PatternShape shape = choice(characterShape(), characterShape());
    shape.choices = 0; // it is one or the other
    shape.readings = 1;
    return shape;
}

PatternShape anchorShape() {
    PatternShape shape = freeNode();
    shape.anchors = shape.allAnchors = shape.copies = 1;
    shape.links = shape.links + kCopyCost;
    return shape;
}

PatternShape wordBoundaryShape() {
    PatternShape shape = choice(anchorShape(), anchorShape());
    shape.hasSkippedAnchor = false;
    shape.choices = 0; // it is one or the other
    shape.readings = 1;
    return shape;
}

PatternShape referenceShape() {
    PatternShape shape = freeNode(); // the group may have been empty
    shape.references = 1;
    return shape;
}

PatternShape sequence(const PatternShape &first, const PatternShape &second) {
    PatternShape both = sumOf(first, second);
    both.entry = first.isNullable ? first.entry + second.entry : first.entry;
    both.exit = second.exit;
    both.anchors = second.anchors;
    both.copies = second.copies;
    if (second.isNullable) {
        both.exit = both.exit + first.exit;
        both.anchors = both.anchors + first.anchors;
        both.copies = both.copies + first.copies + first.anchors * second.exit;
    }
    both.leadsToLoop = first.leadsToLoop || (first.isNullable && second.leadsToLoop);
    both.stretch = std::max(
        {first.stretch, second.stretch, (second.leadsToLoop ? kLoopCost : 1) * (first.exit + second.entry)});
    both.links = both.links + linksBetween(first, second);
    both.ways = waysThrough(first, second);
    both.readings = first.readings * second.readings;
    both.isNullable = first.isNullable && second.isNullable;
    return both;
}

PatternShape choice(const PatternShape &first, const PatternShape &second) {
    PatternShape either = sumOf(first, second);
    either.nodes = either.nodes + 1;
    either.choices = either.choices + 1;
    either.readings = first.readings + second.readings;
    either.entry = first.entry + second.entry + 1;
    either.isNullable = first.isNullable || second.isNullable;
    either.hasSkippedAnchor = PatternCount() < either.allAnchors;
    either.hasSkippedReference |= PatternCount() < either.references && !(PatternCount() < either.captures);
    either.hasSkippedCapture = either.hasSkippedCapture || either.hasIdleCapture;
    either.exit = first.exit + second.exit + (either.isNullable ? 1 : 0);
    either.leadsToLoop = first.leadsToLoop || second.leadsToLoop;
    either.stretch = std::max({first.stretch, second.stretch, either.entry, either.exit});
    either.anchors = first.anchors + second.anchors;
    either.copies = first.copies + second.copies;
    either.links = either.links + either.entry;
    const PatternShape::Ways &a = first.ways, &b = second.ways;
    either.ways = {std::max(a.in, b.in), std::max(a.out, b.out), a.through + b.through,
                   std::max(a.most, b.most)};
    return either;
}

PatternShape group(const PatternShape &part) {
    return sequence(sequence(freeNode(), part), freeNode());
}

PatternShape loop(const PatternShape &part) {
    PatternShape shape = choice(part, PatternShape());
    if (part.isNullable && PatternCount() < part.anchors)
        shape.ways.through = kAnchorLoopCost * shape.ways.through * shape.ways.through;
    shape.links = shape.links + linksBetween(part, shape);
    shape.stretch = std::max(shape.stretch, part.exit + shape.entry);
    shape.ways.most = std::max(shape.ways.most, part.ways.out * part.ways.in);
    if (part.isNullable)
        shape.loopedAnchors = part.allAnchors;
    shape.leadsToLoop = part.leadsToLoop || part.isNullable;
    shape.hasIdleLoop = part.hasIdleLoop || part.isNullable;
    shape.hasEndlessRepeat = true;
    shape.readings = PatternCount(1) < part.readings ? PatternCount(UINT64_MAX) : 1; // in each turn
    return shape;
}

} // namespace qb::text
