#include "support/Describe.h"

#include <QBFoundation/Foundation/NSString.h>

#include <utility>

std::string describe(id object) {
    if (!object)
        return "nil";
    if (auto *array = qb::castOrNil<NSArray>(object)) {
        std::string text, between;
        for (id element : *array)
            text += std::exchange(between, ", ") + describe(element);
        return "(" + text + ")";
    }
    if (auto *dictionary = qb::castOrNil<NSDictionary>(object)) {
        std::string text = "{";
        for (const auto &[key, value] : *dictionary)
            text += describe(key) + " = " + describe(value) + "; ";
        return text + "}";
    }
    NSString *const text = object->description();
    return text ? std::string(text->view()) : "nil";
}

std::string describe(const qb::Value &value) {
    switch (value.kind()) {
    case qb::Kind::integer:
        return value.isSigned() ? std::to_string(value.integer())
                                : std::to_string(static_cast<std::uint64_t>(value.integer()));
    case qb::Kind::character:
        return std::string(1, static_cast<char>(value.integer()));
    case qb::Kind::real:
        return std::to_string(value.real());
    case qb::Kind::cString:
        return value.cString() ? value.cString() : "NULL";
    case qb::Kind::object:
    case qb::Kind::classObject:
        return describe(value.object());
    default:
        return "kind " + std::to_string(static_cast<int>(value.kind()));
    }
}
