#include "platform/stop_signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace ampdesk {

StopSignals::StopSignals() {
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGTERM);
    sigaddset(&stop, SIGINT);
    struct sigaction hang_up {};
    if (sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler != SIG_IGN)
        sigaddset(&stop, SIGHUP);
    arrived_ = Descriptor(signalfd(-1, &stop, SFD_CLOEXEC | SFD_NONBLOCK));
    if (arrived_ && pthread_sigmask(SIG_BLOCK, &stop, nullptr) != 0)
        arrived_ = Descriptor();
}

void StopSignals::take() {
    signalfd_siginfo info{};
    while (::read(arrived_.get(), &info, sizeof info) > 0) {
    }
}

}  // namespace ampdesk
