// Paths in trees of named objects.
#include <QBFoundation/QBPath.h>

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/Send.h>

#include "QBPath.Tables.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

// Climbs from an object to the root of its tree.
class Climb {
public:
    Climb(id start, const char *selector) : object_(start), marked_(start), selector_(selector) {}

    const Ref<NSObject> &object() const { return object_; }

    // Returns false at the root.
    bool goOn() {
        const Ref<NSObject> parent = send<id>(object_.get(), "parentObject"_sel);
        if (IsNil(parent))
            return false;
        // An object that is met again would be for ever; it is enough to remember the one at each power of
        // two (R. P. Brent, "An improved Monte Carlo factorization algorithm", 1980).
        if (parent == marked_)
            throw InvalidArgumentException(std::string("QBPath ") + selector_ +
                                           " must have an object whose parents do not go round in a circle.");
        if (++steps_ == nextMark_) {
            marked_ = parent;
            nextMark_ *= 2;
        }
        object_ = parent;
        return true;
    }

private:
    Ref<NSObject> object_, marked_; // kept, for their operations may take the tree apart
    const char *selector_;
    std::uint64_t steps_ = 0;
    std::uint64_t nextMark_ = 1;
};

Ref<NSObject> rootOf(id object) {
    Climb climb(object, "_objRelativeTo:exact:");
    while (climb.goOn()) {
    }
    return climb.object();
}

// nil where the object answers with the null object, too.
Ref<NSObject> stepFrom(id object, NSString *component) {
    if (component->isEqual("."_ns) || !component->containsData())
        return object;
    const Ref<NSObject> next = component->isEqual(".."_ns)
                                   ? send<id>(object, "parentObject"_sel)
                                   : send<id>(object, "childObjectWithName:"_sel, component);
    return IsNil(next) ? nullptr : next;
}

// Walks with a pool of its own, because deep trees leave much behind.
Ref<NSObject> walk(const QBPath *path, id start, BOOL exact) {
    const NSAutoreleasePool pool;
    return path->_objRelativeTo(start, exact);
}

} // namespace

std::span<const qb::Method> qb::tables::pathHierarchicalObject() {
    static const qb::Method methods[] = {
        qb::classMethod<"qbPathWithObject:">(&QBPath::qbPathWithObjectOfClass),
        qb::method<"objectRelativeTo:">(&QBPath::objectRelativeTo),
        qb::method<"closestObjectRelativeTo:">(&QBPath::closestObjectRelativeTo),
        qb::method<"_objRelativeTo:exact:">(&QBPath::_objRelativeTo),
    };
    return methods;
}

QBPath *QBPath::qbPathWithObjectOfClass(Class *asked, id object) {
    const Ref<NSObject> kept = object; // whatever it does when it is asked
    std::vector<Ref<NSObject>> names;
    if (!IsNil(object)) {
        Climb climb(object, "qbPathWithObject:");
        do
            names.emplace_back(send<id>(climb.object().get(), "name"_sel));
        while (climb.goOn());
    }
    const std::vector<id> components(names.rbegin(), names.rend());
    return qbPathWithArrayOfClass(asked, NSArray::arrayWith(components), /*isAbsolutePath=*/YES,
                                  /*isDirectory=*/NO);
}

id QBPath::objectRelativeTo(id start) const {
    return walk(this, start, /*exact=*/YES).autorelease();
}

id QBPath::closestObjectRelativeTo(id start) const {
    return walk(this, start, /*exact=*/NO).autorelease();
}

id QBPath::_objRelativeTo(id start, BOOL) const {
    if (!start)
        return nullptr;
    const Ref<NSArray> components = pathArray(); // the objects may let the path go
    Ref<NSObject> object = isAbsolutePath() ? rootOf(start) : Ref<NSObject>(start);
    for (std::uint32_t i = 0; object && i < components->count(); ++i)
        object = stepFrom(object, static_cast<NSString *>(components->objectAtIndex(i)));
    return object.autorelease();
}
