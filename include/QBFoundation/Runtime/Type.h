// Types of parameters and results, as dispatch sees them.
#ifndef QBFOUNDATION_RUNTIME_TYPE_H
#define QBFOUNDATION_RUNTIME_TYPE_H

#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Runtime/Ref.h>
#include <QBFoundation/Runtime/Selector.h>
#include <QBFoundation/Runtime/Types.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace qb {

class ArgList;
class Value;

/// The kinds of values that messages carry. `char` alone is the character kind; the other small types are
/// integers.
enum class Kind : std::uint8_t {
    none,
    integer,
    character,
    real,
    cString,
    pointer,
    function,
    object,
    selector,
    classObject,
    range,
    argList
};

/// A parameter's or result's type.
struct Type {
    Kind kind = Kind::none;
    std::uint8_t width = 0;               // integers and characters: bits
    bool isSigned = false;                // integers
    bool isConst = false;                 // pointers: to something constant
    bool isOwned = false;                 // results: the caller owns the object
    Class *(*cls)() = nullptr;            // objects
    const std::type_info *info = nullptr; // pointers and functions: what is pointed to, without const
};

namespace detail {
template <class T>
struct IsRef : std::false_type {};
template <class T>
struct IsRef<Ref<T>> : std::true_type {};
template <class T>
struct RefTarget {
    using Target = T;
};
template <class T>
struct RefTarget<Ref<T>> {
    using Target = T;
};

template <class T>
concept Complete = requires {
    sizeof(T);
};

template <class P>
constexpr Kind kindOfPointer() {
    if constexpr (std::is_function_v<P>) {
        return Kind::function;
    } else if constexpr (std::is_same_v<std::remove_const_t<P>, char>) {
        return Kind::cString;
    } else if constexpr (std::is_same_v<P, const Selector>) {
        return Kind::selector;
    } else if constexpr (std::is_same_v<P, Class>) {
        return Kind::classObject;
    } else if constexpr (std::is_class_v<P>) {
        static_assert(Complete<P>, "include the header of the class that this pointer points to");
        return std::is_convertible_v<std::remove_const_t<P> *, NSObject *> ? Kind::object : Kind::pointer;
    } else {
        return Kind::pointer;
    }
}

template <class F>
struct Function {
    using Type = F;
};
template <class R, class... P>
struct Function<R(P...) noexcept> {
    using Type = R(P...);
};
template <class R, class... P>
struct Function<R(P..., ...) noexcept> {
    using Type = R(P..., ...);
};

template <class T, bool = std::is_enum_v<T>>
struct Integer {
    using Number = T;
};
template <class T>
struct Integer<T, true> {
    using Number = std::underlying_type_t<T>;
};
} // namespace detail

/// An enumeration's underlying type, any other type itself.
template <class T>
using IntegerOf = typename detail::Integer<T>::Number;

/// The type of the function behind a pointer; noexcept makes no difference.
template <class T>
using FunctionOf = typename detail::Function<std::remove_pointer_t<std::decay_t<T>>>::Type;

/// The class behind an object pointer or a `Ref`.
template <class T>
using ObjectOf = std::remove_pointer_t<typename detail::RefTarget<std::remove_cv_t<T>>::Target>;

/// The kind of a C++ type; `none` for a type that no message carries.
template <class T>
constexpr Kind kindOf() {
    using D = std::decay_t<T>;
    if constexpr (std::is_same_v<D, char>)
        return Kind::character;
    else if constexpr (std::is_integral_v<D> || std::is_enum_v<D>)
        return Kind::integer;
    else if constexpr (std::is_floating_point_v<D>)
        return Kind::real;
    else if constexpr (detail::IsRef<D>::value)
        return Kind::object;
    else if constexpr (std::is_same_v<D, NSRange>)
        return Kind::range;
    else if constexpr (std::is_same_v<D, ArgList>)
        return Kind::argList;
    else if constexpr (std::is_pointer_v<D>)
        return detail::kindOfPointer<std::remove_pointer_t<D>>();
    else
        return Kind::none;
}

template <class T>
constexpr bool isSignedInteger() {
    return std::is_signed_v<IntegerOf<T>>;
}

/// The object that a pointer or a `Ref` refers to.
template <class T>
id plainPointer(T *object) {
    return const_cast<std::remove_const_t<T> *>(object);
}
template <class T>
id plainPointer(const Ref<T> &reference) {
    return reference.get();
}

template <class T>
constexpr Type makeType() {
    constexpr Kind kind = kindOf<T>();
    static_assert(kind != Kind::none || std::is_void_v<T>,
                  "no operation takes or returns a value of this type");
    using D = std::decay_t<T>;
    Type type{.kind = kind};
    if constexpr (kind == Kind::integer || kind == Kind::character) {
        type.width = std::is_same_v<IntegerOf<D>, bool> ? 1 : sizeof(D) * 8; // not every byte is a bool
        type.isSigned = isSignedInteger<D>();
    } else if constexpr (kind == Kind::real) {
        type.width = sizeof(D) * 8;
    } else if constexpr (kind == Kind::object || kind == Kind::classObject) {
        type.isOwned = detail::IsRef<D>::value;
        type.cls = &ObjectOf<D>::cls;
    } else if constexpr (kind == Kind::pointer || kind == Kind::cString) {
        type.isConst = std::is_const_v<std::remove_pointer_t<D>>;
        type.info = &typeid(std::remove_cv_t<std::remove_pointer_t<D>>);
    } else if constexpr (kind == Kind::function) {
        type.info = &typeid(FunctionOf<D>);
    }
    return type;
}

/// The description of a C++ type, constant for the life of the process.
template <class T>
const Type &typeOf() {
    static const Type type = makeType<T>();
    return type;
}

/// The type's name as it stands in signatures: "NSString *", "uint32_t", "const void *".
QB_EXPORT std::string nameOf(const Type &type);

/// Whether a value of the static type `given` can be handed over as `wanted` without looking at it.
QB_EXPORT bool passesUnchecked(const Type &given, const Type &wanted);

} // namespace qb

#endif
