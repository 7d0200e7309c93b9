#include <QBFoundation/Foundation/NSCharacterSet.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *NSMutableCharacterSet::cls() {
    static const qb::Method methods[] = {
        qb::method<"addCharactersInRange:">(&NSMutableCharacterSet::addCharactersInRange),
        qb::method<"removeCharactersInRange:">(&NSMutableCharacterSet::removeCharactersInRange),
        qb::method<"addCharactersInString:">(&NSMutableCharacterSet::addCharactersInString),
        qb::method<"removeCharactersInString:">(&NSMutableCharacterSet::removeCharactersInString),
        qb::method<"formUnionWithCharacterSet:">(&NSMutableCharacterSet::formUnionWithCharacterSet),
        qb::method<"formIntersectionWithCharacterSet:">(
            &NSMutableCharacterSet::formIntersectionWithCharacterSet),
        qb::method<"invert">(&NSMutableCharacterSet::invert),
    };
    static Class *const self = new Class("NSMutableCharacterSet", NSCharacterSet::cls(), methods,
                                         qb::construct<NSMutableCharacterSet>);
    return self;
}

Ref<NSMutableCharacterSet> NSMutableCharacterSet::init() {
    return qb::init<NSMutableCharacterSet>(&NSMutableCharacterSet::setUp);
}

NSMutableCharacterSet *NSMutableCharacterSet::characterSetWithCharactersInString(NSString *string) {
    return qb::init<NSMutableCharacterSet>(&NSMutableCharacterSet::setUpWithCharactersInString, string)
        .autorelease();
}

NSMutableCharacterSet *NSMutableCharacterSet::characterSetWithRange(NSRange range) {
    return qb::init<NSMutableCharacterSet>(&NSMutableCharacterSet::setUpWithRange, range).autorelease();
}

NSMutableCharacterSet *NSMutableCharacterSet::characterSetWithBitmapRepresentation(NSData *data) {
    return qb::init<NSMutableCharacterSet>(&NSMutableCharacterSet::setUpWithBitmapRepresentation, data)
        .autorelease();
}

// --- Changes ---

void NSMutableCharacterSet::addCharactersInRange(NSRange range) {
    formUnionWithCharacterSet(NSCharacterSet::characterSetWithRange(range));
}

void NSMutableCharacterSet::removeCharactersInRange(NSRange range) {
    formIntersectionWithCharacterSet(NSCharacterSet::characterSetWithRange(range)->invertedSet());
}

void NSMutableCharacterSet::addCharactersInString(NSString *string) {
    formUnionWithCharacterSet(NSCharacterSet::characterSetWithCharactersInString(string));
}

void NSMutableCharacterSet::removeCharactersInString(NSString *string) {
    formIntersectionWithCharacterSet(
        NSCharacterSet::characterSetWithCharactersInString(string)->invertedSet());
}

void NSMutableCharacterSet::formUnionWithCharacterSet(NSCharacterSet *other) {
    if (other)
        setEdges(
            combined(edgesOf(*this), edgesOf(*other), [](bool own, bool others) { return own || others; }));
}

void NSMutableCharacterSet::formIntersectionWithCharacterSet(NSCharacterSet *other) {
    const Edges common = other ? edgesOf(*other) : Edges();
    setEdges(combined(edgesOf(*this), common, [](bool own, bool others) { return own && others; }));
}

// --- Copies ---

Ref<NSObject> NSMutableCharacterSet::copyWithZone(void *) const {
    return immutableCopy();
}
