// Classes as objects.
#ifndef QBFOUNDATION_RUNTIME_CLASS_H
#define QBFOUNDATION_RUNTIME_CLASS_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Runtime/Method.h>
#include <QBFoundation/Runtime/Types.h>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qb {

/// What makes an object of a class, with one reference.
using Construct = NSObject *(*)();

/// The `Construct` of a class that has a default constructor.
template <class T>
NSObject *construct() {
    return new T;
}

/// One table of operations, or several: a class's own, then those of its additions.
class MethodTables {
public:
    template <std::size_t N>
    MethodTables(const Method (&table)[N]) : tables_{std::span<const Method>(table)} {}
    MethodTables(std::initializer_list<std::span<const Method>> tables) : tables_(tables) {}

    auto begin() const { return tables_.begin(); }
    auto end() const { return tables_.end(); }

private:
    std::vector<std::span<const Method>> tables_;
};

class MethodCache;

/// Who makes a class. The library's own sources are compiled with QB_MAKES_LIBRARY_CLASSES.
enum class ClassMaker : bool { client, library };
#ifdef QB_MAKES_LIBRARY_CLASSES
constexpr ClassMaker kClassMaker = ClassMaker::library;
#else
constexpr ClassMaker kClassMaker = ClassMaker::client;
#endif

} // namespace qb

/// A class: its name, its superclass and the operations that its objects and the class itself answer.
///
/// Made once, on the first use of the class's `cls`, and never destroyed.
class QB_EXPORT Class final : public NSObject {
public:
    /// `constructor`: null for a class that can't be default-constructed. `protocols`: names of those it
    /// adopts; they are copied, as `name` is. Throws InvalidArgumentException when a class of that name
    /// exists, and when the library has one, also if that was not made yet. `maker` is left out.
    Class(const char *name, Class *superclass, const qb::MethodTables &methods,
          qb::Construct constructor = nullptr, std::initializer_list<const char *> protocols = {},
          qb::ClassMaker maker = qb::kClassMaker);
    ~Class() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    NSString *name() const;
    std::string_view nameView() const { return name_; }
    Class *superclass() const override { return superclass_; }
    BOOL isSubclassOfClass(Class *other) const {
        for (const Class *one = this; one; one = one->superclass_)
            if (one == other)
                return YES;
        return NO;
    }

    /// Whether the class itself answers the selector.
    BOOL respondsToSelector(SEL selector) const override;
    BOOL instancesRespondToSelector(SEL selector) const {
        return instanceMethodForSelector(selector) != nullptr;
    }
    const qb::Method *methodForSelector(SEL selector) const override;
    /// Returns the operation that the class's objects run for the selector; null when there is none.
    const qb::Method *instanceMethodForSelector(SEL selector) const;
    BOOL conformsToProtocol(Protocol *protocol) const override;

    /// Makes an object of this class, owned. Throws InvalidUseOfMethodException when it can't be
    /// default-constructed.
    Ref<NSObject> construct() const;

    /// Adds an operation, `R (*)(id self, A…)`, to the class and its subclasses.
    /// Throws InvalidArgumentException when the class's objects, or for a class operation the class itself,
    /// answer the selector already, or the selector has another number of colons than the function has
    /// arguments.
    template <class F>
    void addMethod(SEL selector, F *function) {
        addMethod(qb::Method::ofFunction(selector, function));
    }
    void addMethod(const qb::Method &method);

    NSString *description() const override;
    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }

    /// The class's own operations, in the order of its tables.
    std::span<const std::unique_ptr<qb::Method>> ownMethods() const { return methods_; }

private:
    void join(const qb::Method &method);

    const std::string name_;
    Class *const superclass_;
    const qb::Construct construct_;
    std::vector<std::unique_ptr<qb::Method>> methods_;
    std::vector<std::string> protocols_;
    std::unique_ptr<qb::MethodCache> instanceCache_;
    std::unique_ptr<qb::MethodCache> classCache_;
};

namespace qb {

/// Registers a class of a client or a plug-in, so that it is found by its name.
///
/// A constant for each class at file scope: `static const qb::ClassRegistration registration{&MyPage::cls};`.
/// It only links itself into a list; the class is made when it is first asked for.
class QB_EXPORT ClassRegistration {
public:
    explicit ClassRegistration(Class *(*function)());

    Class *(*const cls)();
    const ClassRegistration *const next;
    mutable bool isMade = false; // or being made
};

/// Calls `visit` with each operation of the class: its own first, then those that it inherits and does not
/// have itself. `visit` may add operations, which may or may not be visited.
template <class F>
void forEachMethod(Class *cls, F &&visit) {
    for (Class *owner = cls; owner; owner = owner->superclass())
        for (std::size_t i = 0; i < owner->ownMethods().size(); ++i)
            if (const Method &method = *owner->ownMethods()[i]; method.isFoundFrom(cls))
                visit(method);
}

/// Returns each class of the library, each registered one and each that was made before, by name.
QB_EXPORT std::vector<Class *> allClasses();

} // namespace qb

/// A name that classes adopt to say that they answer a set of operations.
class QB_EXPORT Protocol final : public NSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    NSString *name() const;
    std::string_view nameView() const { return name_; }

    /// Returns the one protocol of that name, made if there is none.
    static Protocol *named(std::string_view name);

private:
    explicit Protocol(std::string_view name) : name_(name) { makeImmortal(); }

    const std::string_view name_;
};

/// Returns the class of that name: of the library, registered, or made before. nil when there is none.
QB_EXPORT Class *NSClassFromString(NSString *name);
/// Returns the class's name; nil for nil.
QB_EXPORT NSString *NSStringFromClass(Class *cls);
/// Returns the selector of that text, made if there is none; null for nil.
QB_EXPORT SEL NSSelectorFromString(NSString *text);
/// Returns the selector's text; nil for null.
QB_EXPORT NSString *NSStringFromSelector(SEL selector);
/// Returns the protocol of that name, made if there is none; nil for nil.
QB_EXPORT Protocol *NSProtocolFromString(NSString *name);

#endif
