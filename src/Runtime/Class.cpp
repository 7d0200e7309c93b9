#include <QBFoundation/Runtime/Class.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/RepeatedMessage.h>
#include <QBFoundation/Runtime/Send.h>

#include "Runtime/ClassRegistry.h"
#include "Runtime/Dispatch.h"
#include "Runtime/MethodCache.h"

#include <algorithm>
#include <cstring>
#include <map>

constinit std::uint32_t qb::dispatchGeneration = 0;

namespace {

// An operation of the tables: the newest superclass's wins, and looking goes outwards from `cls`.
const qb::Method *findIn(const Class *cls, SEL selector, bool isClassMethod) {
    for (; cls; cls = cls->superclass())
        for (const auto &method : cls->ownMethods())
            if (method->selector() == selector && method->isClassMethod() == isClassMethod)
                return method.get();
    return nullptr;
}

} // namespace

Class *Class::cls() {
    static const qb::Method methods[] = {
        qb::method<"name">(&Class::name),
        qb::method<"isSubclassOfClass:">(&Class::isSubclassOfClass),
        qb::method<"instancesRespondToSelector:">(&Class::instancesRespondToSelector),
        qb::method<"instanceMethodForSelector:">(&Class::instanceMethodForSelector),
    };
    static Class *const self = new Class("Class", NSObject::cls(), methods);
    return self;
}

Class::Class(const char *name, Class *superclass, const qb::MethodTables &methods, qb::Construct constructor,
             std::initializer_list<const char *> protocols, qb::ClassMaker maker)
    : name_(name), superclass_(superclass), construct_(constructor),
      protocols_(protocols.begin(), protocols.end()), instanceCache_(std::make_unique<qb::MethodCache>()),
      classCache_(std::make_unique<qb::MethodCache>()) {
    makeImmortal();
    for (const auto &table : methods)
        for (const qb::Method &method : table)
            join(method);
    qb::enterClass(this, maker);
}

Class::~Class() = default;

void Class::join(const qb::Method &method) {
    auto own = std::make_unique<qb::Method>(method);
    own->owner_ = this;
    methods_.push_back(std::move(own));
}

NSString *Class::name() const {
    return NSString::stringWith(name_);
}

NSString *Class::description() const {
    return name();
}

Ref<NSObject> Class::copyWithZone(void *) const {
    return self();
}

const qb::Method *Class::instanceMethodForSelector(SEL selector) const {
    if (!selector)
        return nullptr;
    qb::MethodCache::Slot &slot = instanceCache_->slotFor(selector, qb::dispatchGeneration);
    if (!slot.selector)
        slot = {selector, findIn(this, selector, /*isClassMethod=*/false)};
    return slot.method;
}

// A class is an object too: what it has no operation of its own for, it answers as any object does.
const qb::Method *Class::methodForSelector(SEL selector) const {
    if (!selector)
        return nullptr;
    qb::MethodCache::Slot &slot = classCache_->slotFor(selector, qb::dispatchGeneration);
    if (slot.selector)
        return slot.method;
    const qb::Method *found = findIn(this, selector, /*isClassMethod=*/true);
    if (!found)
        found = findIn(cls(), selector, /*isClassMethod=*/false);
    slot = {selector, found};
    return found;
}

BOOL Class::respondsToSelector(SEL selector) const {
    return methodForSelector(selector) != nullptr;
}

BOOL Class::conformsToProtocol(Protocol *protocol) const {
    if (!protocol)
        return NO;
    for (const Class *one = this; one; one = one->superclass_)
        if (std::find(one->protocols_.begin(), one->protocols_.end(), protocol->nameView()) !=
            one->protocols_.end())
            return YES;
    return NO;
}

Ref<NSObject> Class::construct() const {
    if (!construct_)
        throw InvalidUseOfMethodException(name_ + " has no objects that are made without arguments.");
    return Ref<NSObject>::adopt(construct_());
}

void Class::addMethod(const qb::Method &method) {
    const std::string place = name_ + " addMethod: ";
    if (!method.selector())
        throw InvalidArgumentException(place + "must have a selector that is not null.");
    const bool isAnswered = method.isClassMethod() ? respondsToSelector(method.selector())
                                                   : instancesRespondToSelector(method.selector());
    if (isAnswered)
        throw InvalidArgumentException(place + "must have a selector that the class does not answer yet.");
    const std::size_t named = method.parameterCount() - (method.hasVariableValues() ? 1U : 0U);
    if (method.selector()->colons() != named && method.selector()->colons() != method.parameterCount())
        throw InvalidArgumentException(
            place + "must have a selector with as many colons as the function has arguments.");
    join(method);
    ++qb::dispatchGeneration;
    qb::forgetCallSites();
    qb::RepeatedMessage::forgetAll();
}

Class *Protocol::cls() {
    static const qb::Method methods[] = {qb::method<"name">(&Protocol::name)};
    static Class *const self = new Class("Protocol", NSObject::cls(), methods);
    return self;
}

NSString *Protocol::name() const {
    return NSString::stringWith(name_);
}

Protocol *Protocol::named(std::string_view name) {
    static auto &protocols = *new std::map<std::string, Protocol *, std::less<>>;
    auto entry = protocols.find(name);
    if (entry == protocols.end())
        entry = protocols.emplace(std::string(name), nullptr).first;
    if (!entry->second) // nor was there memory for it before
        entry->second = new Protocol(entry->first);
    return entry->second;
}

SEL NSSelectorFromString(NSString *text) {
    return text ? Selector::named(text->view()) : nullptr;
}

NSString *NSStringFromSelector(SEL selector) {
    return selector ? NSString::stringWith(selector->view()) : nullptr;
}

NSString *NSStringFromClass(Class *cls) {
    return cls ? cls->name() : nullptr;
}

Protocol *NSProtocolFromString(NSString *name) {
    return name ? Protocol::named(name->view()) : nullptr;
}
