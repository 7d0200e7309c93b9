// Takes paths apart and puts them together again: the input's first line is a path, the rest another one.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/QBPath.h>

#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

void checkParts(QBPath *path) {
    NSArray *const components = path->pathArray();
    for (id component : *components) {
        const std::string_view text = component->stringValue()->view();
        require(!text.empty() && text.find('/') == std::string_view::npos, "components are names");
    }
    QBPath *const joined = QBPath::qbPathWithArray(components, path->isAbsolutePath(), /*isDirectory=*/NO);
    require(joined->pathArray()->isEqual(components), "the components make the same path");
    QBPath *const parent = path->pathByRemovingLastPathComponent();
    require(parent == path ? components->count() == 0
                           : parent->pathArray()->count() + 1 == components->count(),
            "one component goes");
    require(path->pathByAppendingPathComponent("x"_ns)
                    ->pathByReplacingExtension("y"_ns)
                    ->stringValue()
                    ->hasSuffix("/x.y"_ns) ||
                !path->containsData(),
            "the extension is that of the last component");
    const std::string text(path->stringValue()->view());
    const std::string base(path->basename()->view()), extension(path->extension()->view());
    require(text.starts_with(base), "the basename is the beginning");
    require(extension.empty() || text.starts_with(base + "." + extension), "the extension stands behind it");
}

// Follows a relative path from the directory that the file is in.
std::vector<std::string_view> follow(QBPath *file, QBPath *way) {
    std::vector<std::string_view> place;
    for (id component : *file->pathArray())
        place.push_back(component->stringValue()->view());
    if (!place.empty())
        place.pop_back();
    for (id component : *way->pathArray())
        if (const std::string_view name = component->stringValue()->view(); name != "..")
            place.push_back(name);
        else if (!place.empty())
            place.pop_back();
    return place;
}

void checkWay(QBPath *from, QBPath *to) {
    const id result = from->relativePathTo(to);
    if (!from->isAbsolutePath() || !to->isAbsolutePath()) {
        require(result == to, "only absolute paths have a way between them");
        return;
    }
    auto *const way = static_cast<QBPath *>(result);
    NSArray *const target = to->pathArray();
    const bool isPlain = !target->containsObject(".."_ns) && !from->pathArray()->containsObject(".."_ns);
    const auto mine = from->pathArray()->view(), theirs = target->view();
    const auto parted = std::mismatch(mine.begin(), mine.end(), theirs.begin(), theirs.end(),
                                      [](id a, id b) { return a->isEqual(b) != NO; });
    if (!isPlain || (parted.second == theirs.end() && parted.first != mine.end()))
        return; // a directory above is left by one step more
    const std::vector<std::string_view> place = follow(from, way);
    require(std::equal(place.begin(), place.end(), theirs.begin(), theirs.end(),
                       [](std::string_view a, id b) { return a == b->stringValue()->view(); }),
            "the way leads there");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const std::string_view first = input.substr(0, input.find('\n'));
    QBPath *const from = NSString::stringWith(first)->asQbPath();
    QBPath *const to = NSString::stringWith(input.substr(std::min(first.size() + 1, size)))->asQbPath();
    checkParts(from);
    checkParts(to);
    checkWay(from, to);
    checkParts(from->pathByAppendingPath(to));
    return 0;
}
