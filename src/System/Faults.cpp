#include "Faults.h"

#ifdef QB_FAULT_INJECTION

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace qb::sys {

namespace {

Fault *youngestFault = nullptr;
std::array<std::uint64_t, kCallCount> callCounts{}; // at `any`, all of them

// The compiler's own text of this function names the enumerator, which spares a second list.
template <Call Value>
constexpr std::string_view enumeratorName() {
    constexpr std::string_view text = __PRETTY_FUNCTION__;
    constexpr std::size_t end = text.find_first_of(";]", text.find("Value = "));
    constexpr std::size_t begin = text.rfind("::", end) + 2;
    return text.substr(begin, end - begin);
}

template <std::size_t... Index>
constexpr auto enumeratorNames(std::index_sequence<Index...>) {
    return std::array<std::string_view, sizeof...(Index)>{enumeratorName<static_cast<Call>(Index)>()...};
}

constexpr auto kCallNames = enumeratorNames(std::make_index_sequence<kCallCount>());
static_assert(kCallNames.front() == "any" && kCallNames.back() == "regexec");

} // namespace

int detail::watchers = 0;

bool detail::interfere(Call call, std::size_t *length) noexcept {
    ++callCounts[static_cast<std::size_t>(Call::any)];
    ++callCounts[static_cast<std::size_t>(call)];
    // Each fault sees every call, so that what an older one skips doesn't depend on a younger one.
    const Fault *acting = nullptr;
    for (Fault *fault = youngestFault; fault; fault = fault->next_) {
        if (fault->strikes(call) && !acting)
            acting = fault;
    }
    if (!acting)
        return false;
    if (acting->effect_ == Fault::Effect::kill)
        std::raise(SIGKILL);
    if (acting->effect_ == Fault::Effect::shortTransfer) {
        if (length)
            *length = std::min(*length, acting->bytes_);
        return false;
    }
    errno = acting->error_;
    return true;
}

std::string_view nameOfCall(Call call) noexcept {
    return kCallNames[static_cast<std::size_t>(call)];
}

Fault::Fault(Call call, unsigned skip, unsigned times, Effect effect, int error, std::size_t bytes) noexcept
    : call_(call), skip_(skip), times_(times), effect_(effect), error_(error), bytes_(bytes),
      next_(youngestFault) {
    youngestFault = this;
    ++detail::watchers;
}

Fault::Fault(Call call, unsigned skip, unsigned times, int error) noexcept
    : Fault(call, skip, times, Effect::error, error, 0) {}

Fault::Fault(Call call, unsigned skip, unsigned times, ShortTransfer transfer) noexcept
    : Fault(call, skip, times, Effect::shortTransfer, 0, transfer.bytes) {}

Fault::Fault(Call call, unsigned skip, KillProcess) noexcept : Fault(call, skip, 1, Effect::kill, 0, 0) {}

Fault::~Fault() {
    Fault **link = &youngestFault;
    while (*link != this)
        link = &(*link)->next_;
    *link = next_;
    --detail::watchers;
}

bool Fault::strikes(Call call) noexcept {
    if (call_ != Call::any && call_ != call)
        return false;
    if (skip_ > 0) {
        --skip_;
        return false;
    }
    if (times_ != 0 && hits_ == times_)
        return false;
    ++hits_;
    struck_ = call;
    return true;
}

CallCounter::CallCounter() noexcept : start_(callCounts) {
    ++detail::watchers;
}

CallCounter::~CallCounter() {
    --detail::watchers;
}

std::uint64_t CallCounter::calls(Call call) const noexcept {
    const auto index = static_cast<std::size_t>(call);
    return callCounts[index] - start_[index];
}

} // namespace qb::sys

#endif // QB_FAULT_INJECTION
