#include "Interruption.h"

#include <csignal>
#include <initializer_list>

namespace publish {

namespace {

volatile std::sig_atomic_t signalCame = 0;

extern "C" void noteSignal(int) {
    signalCame = 1;
}

} // namespace

void watchForInterruption() {
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) // as `nohup` leaves it
            sigaction(number, &action, nullptr);
    }
    std::signal(SIGCHLD, SIG_DFL); // or the ends of filters could not be waited for
    // A write that fails is an error of its own, which leaves nothing half-done.
    for (const int number : {SIGXFSZ, SIGPIPE})
        std::signal(number, SIG_IGN);
}

bool wasInterrupted() {
    return signalCame != 0;
}

} // namespace publish
