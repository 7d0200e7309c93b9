// Messages.
#ifndef QBFOUNDATION_RUNTIME_SEND_H
#define QBFOUNDATION_RUNTIME_SEND_H

#include <QBFoundation/Runtime/MethodTable.h>

#include <cstring>

namespace qb {

/// What a call remembers of its last message: which kind of object received it and the operation that ran.
/// It is forgotten when an operation is added to a class.
struct CallSite {
    const void *key = nullptr;
    const Method *method = nullptr;
    Method::TypedEntry entry = nullptr;
    CallSite *next = nullptr; // in the list of those to be told; a site that remembers nothing is in none
};

/// What tells objects of different classes apart at a call: the object's virtual table, which costs one load.
inline const void *dispatchKey(id receiver) {
    const void *key;
    std::memcpy(&key, static_cast<const void *>(receiver), sizeof key);
    return key;
}

/// Finds the operation and, when values of the static types `types` (result first) can be handed over as they
/// are, returns it and fills `site`, to be remembered when it `lasts`. Returns null when each value has to be
/// looked at, or the message has to be forwarded.
QB_EXPORT const Method *prepareSend(id receiver, SEL selector, CallSite &site, const Type *const *types,
                                    std::size_t argumentCount, bool lasts);

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
            plainPointer(result)->retain(); // the value gives its reference back; the caller gets one
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
    // NOLINTBEGIN(clang-analyzer-core.CallAndMessage): a prepared site has its entry
    if constexpr (std::is_void_v<R>)
        entry(site.method, receiver, pass<A>(arguments)...);
    else if constexpr (IsRef<R>::value)
        return R::adopt(static_cast<ObjectOf<R> *>(entry(site.method, receiver, pass<A>(arguments)...)));
    else
        return unpass<R>(entry(site.method, receiver, pass<A>(arguments)...));
    // NOLINTEND(clang-analyzer-core.CallAndMessage): as above
}

// Where a call keeps its memory: a selector literal has one for all calls with the same types, a selector
// that is known at run time has none.
template <class Selector, class R, class... A>
struct SiteOf {
    static constexpr bool kLasts = false;
    static CallSite &get(CallSite &fresh) { return fresh; }
};
template <FixedString Text, class R, class... A>
struct SiteOf<SelectorLiteral<Text>, R, A...> {
    static constexpr bool kLasts = true;
    static inline constinit CallSite site;
    static CallSite &get(CallSite &) { return site; }
};

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
/// InvalidArgumentException; one without result answers zero. `send<Ref<T>>` adopts the owned result of an
/// initialiser or copy; with `id` it is the caller's to release. Each use of a selector literal with the same
/// types shares one inline cache.
template <class R = id, class S, class... A>
R send(id receiver, S selector, A... arguments) {
    if (!receiver)
        return R();
    if constexpr (qb::detail::arePassable<A...>()) {
        using Site = qb::detail::SiteOf<S, R, A...>;
        qb::CallSite fresh;
        qb::CallSite &site = Site::get(fresh);
        if (site.key == qb::dispatchKey(receiver)) [[likely]]
            return qb::detail::callEntry<R, A...>(site, receiver, arguments...);
        if (qb::prepareSend(receiver, selector, site, qb::detail::typesOf<R, A...>(), sizeof...(A),
                            Site::kLasts))
            return qb::detail::callEntry<R, A...>(site, receiver, arguments...);
    }
    return qb::detail::sendSlowly<R, A...>(receiver, selector, arguments...);
}

#endif
