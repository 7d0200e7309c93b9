// The one way in which the seam's functions reach the system.
#ifndef QBFOUNDATION_SYSTEM_ATTEMPT_H
#define QBFOUNDATION_SYSTEM_ATTEMPT_H

#include "Faults.h"
#include "OnSignal.h"

#include <cerrno>
#include <cstddef>
#include <type_traits>

namespace qb::sys {

/// Returns what a failed call of this result type answers: a null pointer or -1.
template <class Result>
constexpr Result failure() {
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else
        return static_cast<Result>(-1);
}

/// Does `function` once and returns its result, unless a fault makes `call` fail. `length`: see `fails`.
template <class Function>
auto attempt(Call call, Function function, std::size_t *length = nullptr) {
    return fails(call, length) ? failure<decltype(function())>() : function();
}

/// As `attempt`, but again as long as a signal interrupts it.
template <class Function>
auto repeat(Call call, Function function, std::size_t *length = nullptr,
            OnSignal onSignal = OnSignal::repeat) {
    for (;;) {
        const auto result = attempt(call, function, length);
        if (result != failure<decltype(function())>() || errno != EINTR || onSignal == OnSignal::report)
            return result;
    }
}

} // namespace qb::sys

#endif
