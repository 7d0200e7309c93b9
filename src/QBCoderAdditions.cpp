// Selectors and classes by their names.
#include <QBFoundation/Foundation/NSCoder.h>

#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSCoder.Tables.h"

namespace {

constexpr const char *kFile = "src/QBCoderAdditions";
constexpr int kLeastDebugLevel = 12;

void trace(int line, const NSCoder *coder, const char *selector, const char *message) {
    if (debug >= kLeastDebugLevel)
        qb::trace(DEBUG_CHANNEL_MISC, {kFile, line, coder, selector}, message);
}

void encodeName(NSCoder *coder, NSString *name) {
    const id value = name;
    coder->encodeValueOfObjCType("@", &value);
}

// Returns nil for an object that is no text, as for none.
NSString *decodeName(NSCoder *coder) {
    id value = nullptr;
    coder->decodeValueOfObjCType("@", &value);
    return qb::castOrNil<NSString>(value);
}

} // namespace

std::span<const qb::Method> qb::tables::coderAdditions() {
    static const qb::Method methods[] = {
        qb::method<"encodeSelector:">(&NSCoder::encodeSelector),
        qb::method<"decodeSelector">(&NSCoder::decodeSelector),
        qb::method<"encodeClass:">(&NSCoder::encodeClass),
        qb::method<"decodeClass">(&NSCoder::decodeClass),
    };
    return methods;
}

void NSCoder::encodeSelector(SEL selector) {
    trace(__LINE__, this, "encodeSelector:", "enter");
    encodeName(this, NSStringFromSelector(selector));
    trace(__LINE__, this, "encodeSelector:", "leave");
}

SEL NSCoder::decodeSelector() {
    trace(__LINE__, this, "decodeSelector", "enter");
    const SEL selector = NSSelectorFromString(decodeName(this));
    trace(__LINE__, this, "decodeSelector", "leave");
    return selector;
}

void NSCoder::encodeClass(Class *cls) {
    trace(__LINE__, this, "encodeClass:", "enter");
    encodeName(this, NSStringFromClass(cls));
    trace(__LINE__, this, "encodeClass:", "leave");
}

Class *NSCoder::decodeClass() {
    trace(__LINE__, this, "decodeClass", "enter");
    Class *const cls = NSClassFromString(decodeName(this));
    trace(__LINE__, this, "decodeClass", "leave");
    return cls;
}
