// Gets, sets and removes by dotted keys, against a model that takes each key apart by itself.
//
// Each line of the input is a key: "+key" sets, "-key" removes, another one gets.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Child;

/// A dictionary, an array (whose keys are empty), or a number.
struct Node {
    enum Kind { kNumber, kDictionary, kArray } kind = kNumber;
    bool isMutable = false;
    std::vector<Child> children;
};

struct Child {
    std::string key;
    Node node;
};

struct Key {
    explicit Key(std::string_view text)
        : first(text.substr(0, text.find('.'))), hasRest(text.find('.') != std::string_view::npos),
          rest(hasRest ? text.substr(first.size() + 1) : "") {}
    std::string_view first;
    bool hasRest;
    std::string_view rest;
};

std::size_t indexFor(std::string_view text) {
    if (text.find_first_not_of("0123456789") != std::string_view::npos)
        return SIZE_MAX;
    while (text.starts_with('0'))
        text.remove_prefix(1);
    return text.empty() ? 0 : text.size() > 9 ? SIZE_MAX : std::stoul(std::string(text));
}

std::size_t placeOf(const Node &node, std::string_view key) {
    if (node.kind == Node::kArray)
        return indexFor(key);
    std::size_t place = 0;
    while (place < node.children.size() && node.children[place].key != key)
        ++place;
    return place;
}

const Node *get(const Node &node, std::string_view text) {
    const Key key(text);
    const std::size_t place = placeOf(node, key.first);
    if (place >= node.children.size())
        return nullptr;
    const Node &child = node.children[place].node;
    return key.hasRest ? get(child, key.rest) : &child;
}

void change(Node &node, std::string_view text, bool isSet) {
    const Key key(text);
    if (node.kind == Node::kNumber || !node.isMutable) // as elements of arrays may be
        return;
    const std::size_t place = placeOf(node, key.first);
    const bool isThere = place < node.children.size();
    if (key.hasRest) {
        if (!isThere)
            return;
        Node &child = node.children[place].node;
        if (node.kind == Node::kDictionary)
            child.isMutable = true;
        change(child, key.rest, isSet);
    } else if (node.kind == Node::kDictionary && isSet) {
        if (isThere)
            node.children[place].node = Node();
        else
            node.children.push_back({std::string(key.first), Node()});
    } else if (isSet && place <= node.children.size()) {
        node.children.insert(node.children.begin() + static_cast<std::ptrdiff_t>(place), {"", Node()});
    } else if (!isSet && isThere) {
        node.children.erase(node.children.begin() + static_cast<std::ptrdiff_t>(place));
    }
}

bool isSame(const Node &node, id object) {
    if (node.kind == Node::kNumber)
        return object->isKindOfClass(NSNumber::cls());
    if (node.kind == Node::kArray) {
        auto *const array = qb::castOrNil<NSArray>(object);
        bool isEqual = array && array->count() == node.children.size();
        for (std::uint32_t i = 0; isEqual && i < array->count(); ++i)
            isEqual = isSame(node.children[i].node, array->objectAtIndex(i));
        return isEqual;
    }
    auto *const dictionary = qb::castOrNil<NSDictionary>(object);
    bool isEqual = dictionary && dictionary->count() == node.children.size();
    for (const auto &[key, child] : node.children) {
        const id value = isEqual ? dictionary->objectForKey(NSString::stringWith(key)) : nullptr;
        isEqual = value && isSame(child, value);
    }
    return isEqual;
}

id objectOf(const Node &node) {
    if (node.kind == Node::kNumber)
        return NSNumber::numberWithInt(1);
    auto *const dictionary = NSMutableDictionary::dictionary();
    auto *const array = NSMutableArray::array();
    for (const auto &[key, child] : node.children)
        if (node.kind == Node::kArray)
            array->addObject(objectOf(child));
        else
            dictionary->setObjectForKey(objectOf(child), NSString::stringWith(key));
    const id object = node.kind == Node::kArray ? static_cast<id>(array) : dictionary;
    return node.isMutable ? object : object->copy().autorelease();
}

Node tree() {
    const Node number, leaf{Node::kDictionary, false, {{"k", number}, {"", number}}};
    const Node list{
        Node::kArray, false, {{"", number}, {"", leaf}, {"", {Node::kArray, true, {{"", leaf}}}}}};
    return {Node::kDictionary,
            true,
            {{"a", leaf}, {"b", list}, {"c", {Node::kDictionary, false, {{"d", list}}}}}};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    std::string_view rest(reinterpret_cast<const char *>(data), size);
    Node model = tree();
    const id object = objectOf(model);
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const bool isChange = line.starts_with('+') || line.starts_with('-');
        NSString *const key = NSString::stringWith(isChange ? line.substr(1) : line);
        if (!isChange) {
            const Node *const expected = get(model, line);
            const id value = object->deepObjectForKey(key);
            require(!expected || (value && isSame(*expected, value)), "what is there is found");
            require(expected || !value || !value->isKindOfClass(NSDictionary::cls()),
                    "nothing else is found");
            continue;
        }
        change(model, key->view(), line.front() == '+');
        if (line.front() == '+')
            object->setDeepObject(NSNumber::numberWithInt(1), key);
        else
            object->removeDeepObjectForKey(key);
        require(isSame(model, object), "the key, and no other, was changed");
    }
    return 0;
}
