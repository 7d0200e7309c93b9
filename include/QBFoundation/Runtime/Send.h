// Messages.
#ifndef QBFOUNDATION_RUNTIME_SEND_H
#define QBFOUNDATION_RUNTIME_SEND_H

#include <QBFoundation/Runtime/MethodTable.h>

#include <cstring>

namespace qb {

/// What a call remembers of its last message: which kind of object received it and the operation that ran. It
/// holds until an operation is added to a class.
struct CallSite {
    const void *key = nullptr;
    const Method *method = nullptr;
    Method::TypedEntry entry = nullptr;
    std::uint32_t generation = 0;
};

/// Counts the operations added at run time; call sites and class caches of an older count are out of date.
QB_EXPORT extern std::uint32_t dispatchGeneration;

/// What tells objects of different classes apart at a call: the object's virtual table, which costs one load.
inline const void *dispatchKey(id receiver) {
    const void *key;
    std::memcpy(&key, static_cast<const void *>(receiver), sizeof key);
    return key;
}

/// Finds the operation and, when values of the static types `types` (result first) can be handed over as they
/// are, returns it and fills `site`. Returns null when each value has to be looked at, or the message has to
/// be forwarded.
QB_EXPORT const Method *prepareSend(id receiver, SEL selector, CallSite &site, const Type *const *types,
                                    std::size_t argumentCount);

/// Sends a message with run-time values. `isOwned` says whether the result's object belongs to the caller.
QB_EXPORT Value sendValues(id receiver, SEL selector, const Value *values, std::size_t count, bool &isOwned);

[[noreturn]] QB_EXPORT void throwWrongResult(id receiver, SEL selector, const Type &wanted);

namespace detail {

template <class R>
R takeResult(id receiver, SEL selector, const Value &value, bool isOwned) {
    R result{};
    if (value.kind() == Kind::none)
        return result;
    if (!value.get(result))
        throwWrongResult(receiver, selector, typeOf<R>());
    if constexpr (kindOf<R>() == Kind::object && !IsRef<R>::value) {
        if (isOwned && result)
            result->retain(); // the value gives its reference back; the caller gets one
    }
    return result;
}

template <class R, class... A>
__attribute__((noinline)) R sendSlowly(id receiver, SEL selector, const A &...arguments) {
    const Value values[sizeof...(A) + 1] = {Value(arguments)...};
    bool isOwned = false;
    const Value result = sendValues(receiver, selector, values, sizeof...(A), isOwned);
    if constexpr (!std::is_void_v<R>)
        return takeResult<R>(receiver, selector, result, isOwned);
}

template <class R, class... A>
R callEntry(const CallSite &site, id receiver, const A &...arguments) {
    using TypedEntry = typename Result<R>::As (*)(const Method *, id, PassedAs<A>...);
    const auto entry = reinterpret_cast<TypedEntry>(site.entry);
    if constexpr (std::is_void_v<R>)
        entry(site.method, receiver, pass<A>(arguments)...);
    else if constexpr (IsRef<R>::value)
        return R::adopt(static_cast<ObjectOf<R> *>(entry(site.method, receiver, pass<A>(arguments)...)));
    else
        return unpass<R>(entry(site.method, receiver, pass<A>(arguments)...));
}

template <class Selector>
struct IsLiteral : std::false_type {};
template <FixedString Text>
struct IsLiteral<SelectorLiteral<Text>> : std::true_type {};

// nullptr is passed as a value, since it has no class of its own to be checked.
template <class... A>
constexpr bool arePassable() {
    return ((kindOf<A>() != Kind::none) && ...);
}

} // namespace detail
} // namespace qb

/// Sends `receiver` the message: runs the operation that its class has for `selector`, and returns the
/// result.
///
/// A nil receiver answers zero. An object that does not respond gets `forwardInvocation`, which throws
/// InvalidArgumentException unless the class overrides it; the null object answers zero. The arguments are
/// checked against the operation's: integers convert by value where nothing is lost, objects are checked by
/// class, pointers by the type they point to, and a result of another kind than `R` is refused, each with
/// InvalidArgumentException. `send<Ref<T>>` adopts the owned result of an initialiser or copy; with `id` it
/// is the caller's to release. Each use of a selector literal with the same types shares one inline cache.
template <class R = id, class S, class... A>
R send(id receiver, S selector, A... arguments) {
    if (!receiver)
        return R();
    if constexpr (qb::detail::arePassable<A...>()) {
        using Sites = qb::detail::IsLiteral<S>;
        static const qb::Type *const *const types = qb::detail::typesOf<R, A...>();
        if constexpr (Sites::value) {
            static constinit qb::CallSite site;
            if (site.key == qb::dispatchKey(receiver) && site.generation == qb::dispatchGeneration) [[likely]]
                return qb::detail::callEntry<R, A...>(site, receiver, arguments...);
            if (qb::prepareSend(receiver, selector, site, types, sizeof...(A)))
                return qb::detail::callEntry<R, A...>(site, receiver, arguments...);
        } else {
            qb::CallSite site;
            if (qb::prepareSend(receiver, selector, site, types, sizeof...(A)))
                return qb::detail::callEntry<R, A...>(site, receiver, arguments...);
        }
    }
    return qb::detail::sendSlowly<R, A...>(receiver, selector, arguments...);
}

#endif
