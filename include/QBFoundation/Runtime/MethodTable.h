// The entries of method tables.
//
// An entry ties a selector to a member and checks, when it is compiled, that the selector's colons are the
// member's parameters. A class lists what it answers:
//
//     static const qb::Method methods[] = {
//         qb::maker<"tallyWithLimit:">(&QBTally::setUpWithLimit),
//         qb::initialiser<"initWithLimit:">(&QBTally::setUpWithLimit),
//         qb::method<"addString:", Count(NSString *)>(&QBTally::addString),
//         qb::classMethod<"createId">(&IdCreator::createId),
//     };
#ifndef QBFOUNDATION_RUNTIME_METHODTABLE_H
#define QBFOUNDATION_RUNTIME_METHODTABLE_H

#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Method.h>
#include <QBFoundation/Runtime/Value.h>

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

namespace qb {

namespace detail {

// What a typed entry takes and returns: every object as `id`, every pointer as `void *`, every integer by its
// width, so that one function type serves all operations that are called alike.
template <std::size_t Size, bool IsSigned>
struct FixedInteger;
template <>
struct FixedInteger<1, true> {
    using Number = std::int8_t;
};
template <>
struct FixedInteger<2, true> {
    using Number = std::int16_t;
};
template <>
struct FixedInteger<4, true> {
    using Number = std::int32_t;
};
template <>
struct FixedInteger<8, true> {
    using Number = std::int64_t;
};
template <>
struct FixedInteger<1, false> {
    using Number = std::uint8_t;
};
template <>
struct FixedInteger<2, false> {
    using Number = std::uint16_t;
};
template <>
struct FixedInteger<4, false> {
    using Number = std::uint32_t;
};
template <>
struct FixedInteger<8, false> {
    using Number = std::uint64_t;
};

template <class T, Kind K = kindOf<T>()>
struct Passed {
    using As = std::decay_t<T>;
};
template <class T>
struct Passed<T, Kind::integer> {
    using As = typename FixedInteger<sizeof(T), isSignedInteger<T>()>::Number;
};
template <class T>
struct Passed<T, Kind::cString> {
    using As = void *;
};
template <class T>
struct Passed<T, Kind::pointer> {
    using As = void *;
};
template <class T>
struct Passed<T, Kind::function> {
    using As = void (*)();
};
template <class T>
struct Passed<T, Kind::object> {
    using As = id;
};
template <class T>
struct Passed<T, Kind::classObject> {
    using As = id;
};
template <class T>
struct Passed<T, Kind::argList> {
    using As = const ArgList &;
};

template <class T>
using PassedAs = typename Passed<std::decay_t<T>>::As;

template <class T>
PassedAs<T> pass(const T &value) {
    constexpr Kind kind = kindOf<T>();
    if constexpr (kind == Kind::cString || kind == Kind::pointer)
        return const_cast<void *>(static_cast<const void *>(value));
    else if constexpr (kind == Kind::function)
        return reinterpret_cast<void (*)()>(+value);
    else if constexpr (kind == Kind::object || kind == Kind::classObject)
        return plainPointer(value);
    else
        return static_cast<PassedAs<T>>(value);
}

template <class T>
decltype(auto) unpass(PassedAs<T> value) {
    using D = std::decay_t<T>;
    constexpr Kind kind = kindOf<T>();
    if constexpr (kind == Kind::function)
        return reinterpret_cast<D>(value);
    else if constexpr (kind == Kind::object || kind == Kind::classObject)
        return static_cast<ObjectOf<D> *>(value);
    else if constexpr (kind == Kind::argList)
        return static_cast<const ArgList &>(value);
    else if constexpr (kind == Kind::real)
        return rounded(value);
    else
        return static_cast<D>(value);
}

// A result on its way out: an owned object leaves with its reference, a list with its values.
template <class R>
struct Result {
    using D = std::decay_t<R>;
    using As = std::decay_t<PassedAs<D>>;
    static As pass(D value) {
        if constexpr (IsRef<D>::value)
            return value.detach();
        else
            return detail::pass<D>(value);
    }
};
template <>
struct Result<void> {
    using As = void;
};

template <class R>
Value valueOfResult(typename Result<R>::As result) {
    if constexpr (IsRef<std::decay_t<R>>::value)
        return Value::adopting(result);
    else
        return Value(unpass<R>(result));
}

// The parameter types of an entry, in the form that `Method` keeps.
template <class R, class... P>
const Type *const *typesOf() {
    static const Type *const types[] = {&typeOf<std::decay_t<R>>(), &typeOf<std::decay_t<P>>()...};
    return types;
}

template <class... P>
constexpr bool endsInArgList() {
    if constexpr (sizeof...(P) == 0)
        return false;
    else
        return std::is_same_v<std::decay_t<std::tuple_element_t<sizeof...(P) - 1, std::tuple<P...>>>,
                              ArgList>;
}

template <class... P>
constexpr bool beginsWithClass() {
    if constexpr (sizeof...(P) == 0)
        return false;
    else
        return std::is_same_v<std::tuple_element_t<0, std::tuple<P...>>, Class *>;
}

/// Whether a selector with `colons` colons names an operation with the parameters `P`.
template <class... P>
constexpr bool fits(std::size_t colons, std::size_t hidden = 0) {
    return colons + hidden == sizeof...(P) || (endsInArgList<P...>() && colons + hidden + 1 == sizeof...(P));
}

// Whether an object has one address as an NSObject and as a `T`.
template <class T>
bool beginsWithNSObject() {
    T *const object = reinterpret_cast<T *>(alignof(std::max_align_t));
    return static_cast<const void *>(static_cast<const NSObject *>(object)) == object;
}

// Whether a result leaves a member just as it leaves its typed entry.
template <class R>
bool leavesUnchanged() {
    if constexpr (std::is_void_v<R> || std::is_reference_v<R> || IsRef<std::decay_t<R>>::value)
        return false;
    else if constexpr (kindOf<R>() == Kind::object)
        return beginsWithNSObject<std::remove_pointer_t<R>>();
    else
        return std::is_same_v<R, PassedAs<R>>;
}

// The two ways into an operation. `Call` says how the member is reached: static R call(const Method &, id,
// P...).
template <class Call, class R, class... P>
struct Entry {
    static typename Result<R>::As typed(const Method *method, id receiver, PassedAs<P>... arguments) {
        if constexpr (std::is_void_v<R>)
            Call::call(*method, receiver, unpass<P>(arguments)...);
        else
            return Result<R>::pass(Call::call(*method, receiver, unpass<P>(arguments)...));
    }
    static Value listed(const Method &method, id receiver, const Value *values) {
        return listedAt(method, receiver, values, std::index_sequence_for<P...>());
    }
    template <std::size_t... I>
    static Value listedAt(const Method &method, id receiver, [[maybe_unused]] const Value *values,
                          std::index_sequence<I...>) {
        std::tuple<std::decay_t<P>...> arguments;
        (convertArgument(method, values, I, std::get<I>(arguments)), ...);
        if constexpr (std::is_void_v<R>) {
            Call::call(method, receiver, std::get<I>(arguments)...);
            return Value();
        } else {
            return valueOfResult<R>(Result<R>::pass(Call::call(method, receiver, std::get<I>(arguments)...)));
        }
    }
    static Method make(SEL selector, auto member, bool isClassMethod) {
        return Method(selector, member, typesOf<R, P...>(), sizeof...(P),
                      reinterpret_cast<void (*)()>(&typed), &listed, isClassMethod, endsInArgList<P...>(),
                      isBareMember());
    }
    static bool isBareMember() {
        if constexpr (sizeof...(P) == 0 && requires { typename Call::Receiver; })
            return beginsWithNSObject<typename Call::Receiver>() && leavesUnchanged<R>();
        else
            return false;
    }
    template <class T>
    static void convertArgument(const Method &method, const Value *values, std::size_t index, T &argument);
};

[[noreturn]] QB_EXPORT void throwWrongArgument(const Method &method, std::size_t index);
QB_EXPORT Ref<NSObject> constructFor(id asked);

template <class Call, class R, class... P>
template <class T>
void Entry<Call, R, P...>::convertArgument(const Method &method, const Value *values, std::size_t index,
                                           T &argument) {
    if (!values[index].get(argument))
        throwWrongArgument(method, index);
}

// A member function called on the receiver.
template <class Member, class C, class R, class... P>
struct MemberCall {
    using Receiver = C;
    static R call(const Method &method, id receiver, P... arguments) {
        return (static_cast<C *>(receiver)->*method.target<Member>())(static_cast<P>(arguments)...);
    }
};

// A static function; `PassesAsked`: with the class that was asked in front.
template <class Function, bool PassesAsked, class R, class... P>
struct StaticCall {
    static R call(const Method &method, [[maybe_unused]] id receiver, P... arguments) {
        if constexpr (PassesAsked)
            return method.target<Function>()(static_cast<Class *>(receiver), static_cast<P>(arguments)...);
        else
            return method.target<Function>()(static_cast<P>(arguments)...);
    }
};

// A plain function added to a class at run time.
template <class Function, class R, class... P>
struct FunctionCall {
    static R call(const Method &method, id receiver, P... arguments) {
        return method.target<Function>()(receiver, static_cast<P>(arguments)...);
    }
};

// A set-up member called on a new object of the class that was asked.
template <class Member, class C, class... P>
struct InitialiserCall {
    static Ref<C> call(const Method &method, id receiver, P... arguments) {
        const Ref<NSObject> object = constructFor(receiver);
        C *made = static_cast<C *>(object.get());
        return (made->*method.target<Member>())(static_cast<P>(arguments)...) ? Ref<C>(made) : Ref<C>();
    }
};
template <class Member, class C, class... P>
struct MakerCall {
    static C *call(const Method &method, id receiver, P... arguments) {
        return InitialiserCall<Member, C, P...>::call(method, receiver, static_cast<P>(arguments)...)
            .autorelease();
    }
};

template <class Member, class C, class R, class... P>
Method makeMember(SEL selector, Member member) {
    return Entry<MemberCall<Member, C, R, P...>, R, P...>::make(selector, member, /*isClassMethod=*/false);
}

template <bool PassesAsked, class R, class First, class... P, class Function>
Method makeStatic(SEL selector, Function function) {
    if constexpr (PassesAsked)
        return Entry<StaticCall<Function, true, R, P...>, R, P...>::make(selector, function,
                                                                         /*isClassMethod=*/true);
    else
        return Entry<StaticCall<Function, false, R, First, P...>, R, First, P...>::make(selector, function,
                                                                                        true);
}

} // namespace detail

namespace detail {
template <FixedString Text, class C, class R, class... P>
Method methodOf(R (C::*member)(P...)) {
    static_assert(fits<P...>(Text.colons()), "the selector's colons are not the member's parameters");
    return makeMember<R (C::*)(P...), C, R, P...>(Selector::named(Text.view()), member);
}
template <FixedString Text, class C, class R, class... P>
Method methodOf(R (C::*member)(P...) const) {
    static_assert(fits<P...>(Text.colons()), "the selector's colons are not the member's parameters");
    return makeMember<R (C::*)(P...) const, C, R, P...>(Selector::named(Text.view()), member);
}
template <class Signature>
struct ConstOf;
template <class R, class... P>
struct ConstOf<R(P...)> {
    using Signature = R(P...) const;
};
} // namespace detail

/// An operation of the class's objects.
template <FixedString Text, class C, class R, class... P>
Method method(R (C::*member)(P...)) {
    return detail::methodOf<Text>(member);
}
template <FixedString Text, class C, class R, class... P>
Method method(R (C::*member)(P...) const) {
    return detail::methodOf<Text>(member);
}

/// As above; an overloaded member names its signature:
/// `method<"addString:times:", Count(NSString *, Count)>(&QBTally::addString)`.
template <FixedString Text, class Signature, class C>
requires std::is_function_v<Signature> Method method(Signature C::*member) {
    return detail::methodOf<Text>(member);
}
template <FixedString Text, class Signature, class C>
requires std::is_function_v<Signature>
    Method method(typename detail::ConstOf<Signature>::Signature C::*member) {
    return detail::methodOf<Text>(member);
}

namespace detail {
template <FixedString Text, class R, class... P>
Method classMethodOf(R (*function)(P...)) {
    // A class in front is the one asked, unless each parameter has a colon of its own.
    constexpr bool passesAsked = beginsWithClass<P...>() && Text.colons() != sizeof...(P);
    static_assert(fits<P...>(Text.colons(), passesAsked ? 1 : 0),
                  "the selector's colons are not the function's parameters");
    const SEL selector = Selector::named(Text.view());
    if constexpr (sizeof...(P) == 0)
        return Entry<StaticCall<R (*)(), false, R>, R>::make(selector, function, /*isClassMethod=*/true);
    else
        return makeStatic<passesAsked, R, P...>(selector, function);
}
} // namespace detail

/// An operation of the class itself. A function that takes `Class *asked` first, hidden from the selector,
/// learns which class the message was sent to.
template <FixedString Text, class R, class... P>
Method classMethod(R (*function)(P...)) {
    return detail::classMethodOf<Text>(function);
}
template <FixedString Text, class Signature>
requires std::is_function_v<Signature> Method classMethod(Signature *function) {
    return detail::classMethodOf<Text>(function);
}

/// The class operation that returns an object set up by `member`, owned by the caller.
template <FixedString Text, class C, class R, class... P>
Method initialiser(R (C::*member)(P...)) {
    static_assert(detail::fits<P...>(Text.colons()), "the selector's colons are not the member's parameters");
    using Call = detail::InitialiserCall<R (C::*)(P...), C, P...>;
    return detail::Entry<Call, Ref<C>, P...>::make(Selector::named(Text.view()), member,
                                                   /*isClassMethod=*/true);
}

/// As `initialiser`, but the object is autoreleased.
template <FixedString Text, class C, class R, class... P>
Method maker(R (C::*member)(P...)) {
    static_assert(detail::fits<P...>(Text.colons()), "the selector's colons are not the member's parameters");
    using Call = detail::MakerCall<R (C::*)(P...), C, P...>;
    return detail::Entry<Call, C *, P...>::make(Selector::named(Text.view()), member, /*isClassMethod=*/true);
}

template <class R, class... A>
Method Method::ofFunction(SEL selector, R (*function)(id, A...)) {
    using Call = detail::FunctionCall<R (*)(id, A...), R, A...>;
    return detail::Entry<Call, R, A...>::make(selector, function, /*isClassMethod=*/false);
}

} // namespace qb

#endif
