// Values as PHP literals.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSObject.Tables.h"
#include "Foundation/Nesting.h"
#include "Foundation/PlainClasses.h"
#include "Text/Room.h"

#include <string>
#include <utility>

namespace {

constexpr const char *kFile = "src/QBPhpStringConversions";

struct PhpStrings {
    static constexpr unsigned kDeepest = 512; // as deep as containers may be written on streams
};

NSString *notImplemented() {
    return "not implemented correctly"_ns;
}

// Goes over a container or an enumerator; `textOf` makes the text of a step, which is left out when it is
// nil. It keeps the objects of the step, because texts may be made by clients, who may change the container.
template <class Container, class TextOf>
NSString *phpArray(Container &container, TextOf textOf) {
    const qb::Nesting<PhpStrings> nesting(kFile, __LINE__);
    std::string text = "array(";
    const char *separator = "";
    for (const auto &element : container) {
        if (nesting.isTooDeep())
            return nullptr;
        const NSAutoreleasePool pool; // for the texts of the elements
        NSString *const elementText = textOf(element);
        if (!elementText)
            continue;
        text += std::exchange(separator, ", ");
        qb::text::append(text, elementText->view());
    }
    return nesting.isTooDeep() ? nullptr : NSString::stringWith(text += ")");
}

NSString *phpElement(const Ref<NSObject> &element) {
    return element->asPhpString();
}

NSString *phpEntry(const Ref<NSObject> &key, const Ref<NSObject> &value) {
    const Ref<NSString> valueText = value ? value->asPhpString() : nullptr;
    NSString *const keyText = key->asPhpString();
    if (!keyText || !valueText)
        return nullptr;
    return NSString::stringWithRestrictedFormat("%s => %s"_ns, keyText, valueText);
}

} // namespace

std::span<const qb::Method> qb::tables::objectPhpString() {
    static const qb::Method methods[] = {qb::method<"asPhpString">(&NSObject::asPhpString)};
    return methods;
}

NSString *NSObject::asPhpString() const {
    NSString *const text = stringValue();
    return text ? text->asPhpString() : notImplemented();
}

NSString *NSString::asPhpString() const {
    return notImplemented();
}

NSString *QBNil::asPhpString() const {
    return notImplemented();
}

// A subclass's elements and entries are those that its enumerators give.

NSString *NSArray::asPhpString() const {
    if (qb::isPlainArray(this))
        return phpArray(*this, &phpElement);
    const Ref<NSEnumerator> elements = objectEnumerator();
    return elements ? phpArray(*elements, &phpElement) : "array()"_ns;
}

NSString *NSDictionary::asPhpString() const {
    if (qb::isPlainDictionary(this))
        return phpArray(*this, [](const Pair &entry) { return phpEntry(entry.first, entry.second); });
    const Ref<NSEnumerator> keys = keyEnumerator();
    return keys ? phpArray(*keys, [this](id key) { return phpEntry(key, objectForKey(key)); }) : "array()"_ns;
}
