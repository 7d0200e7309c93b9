// Paths made of others.
#include <QBFoundation/QBPath.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "QBPath.Tables.h"

#include <algorithm>
#include <string>
#include <vector>

std::span<const qb::Method> qb::tables::pathDerivation() {
    static const qb::Method methods[] = {
        qb::method<"pathByRemovingLastPathComponent">(&QBPath::pathByRemovingLastPathComponent),
        qb::method<"pathByReplacingExtension:">(&QBPath::pathByReplacingExtension),
        qb::method<"pathByAppendingPathComponent:">(&QBPath::pathByAppendingPathComponent),
        qb::method<"pathByAppendingPath:">(&QBPath::pathByAppendingPath),
        qb::method<"relativePathTo:">(&QBPath::relativePathTo),
    };
    return methods;
}

QBPath *QBPath::pathByRemovingLastPathComponent() const {
    const auto components = pathArray()->view();
    if (components.empty())
        return asQbPath();
    NSArray *const others = NSArray::arrayWith(components.first(components.size() - 1));
    return qbPathWithArrayOfClass(classObject(), others, isAbsolutePath(), /*isDirectory=*/YES);
}

QBPath *QBPath::pathByReplacingExtension(NSString *extension) const {
    NSString *const base = basename();
    const bool isReplaced = extension && extension->containsData();
    return derived(isReplaced ? base->stringByAppendingPathExtension(extension) : base);
}

QBPath *QBPath::pathByAppendingPathComponent(id component) const {
    const qb::Kept kept(component); // whatever it does for its text
    NSString *const added = component ? component->stringValue() : nullptr;
    if (!added || !added->containsData())
        return asQbPath();
    if (!containsData())
        return derived(added);
    std::string text(string_->view());
    if (!isDirectory())
        text += '/';
    return derived(NSString::stringWith(text.append(added->view().substr(added->isAbsolutePath() ? 1 : 0))));
}

QBPath *QBPath::pathByAppendingPath(id path) const {
    QBPath *const added = path ? path->asQbPath() : nullptr;
    if (!added)
        return asQbPath();
    NSArray *const components = pathArray()->arrayByAddingObjectsFromArray(added->pathArray());
    return qbPathWithArrayOfClass(classObject(), components, isAbsolutePath(), added->isDirectory());
}

id QBPath::relativePathTo(id path) const {
    const qb::Kept keptPath(path); // whatever its class does for a path, or makes of comparing components
    const Ref<QBPath> target = path && isAbsolutePath() ? path->asQbPath() : nullptr;
    if (!target || !target->isAbsolutePath())
        return path;
    const Ref<NSArray> myArray = NSArray::initWith(pathArray()->view()),
                       theirArray = NSArray::initWith(target->pathArray()->view());
    const auto mine = myArray->view();
    const auto theirs = theirArray->view();
    const auto areEqual = [](id a, id b) { return a->isEqual(b) != NO; };
    const auto common = static_cast<std::size_t>(
        std::mismatch(mine.begin(), mine.end(), theirs.begin(), theirs.end(), areEqual).first - mine.begin());
    // The receiver's last component is a file, which one leaves without a step; so where the ways part, the
    // directory or file there takes none either.
    const std::size_t ups =
        common == theirs.size() ? mine.size() - common : mine.size() - std::min(common + 1, mine.size());
    std::vector<id> components(ups, ".."_ns);
    // A target that is the receiver, or stands below it, is reached by way of the last common component.
    const std::size_t from = common == mine.size() && common != 0 ? common - 1 : common;
    components.insert(components.end(), theirs.begin() + static_cast<std::ptrdiff_t>(from), theirs.end());
    return qbPathWithArrayOfClass(classObject(), NSArray::arrayWith(components), /*isAbsolutePath=*/NO,
                                  target->isDirectory());
}
