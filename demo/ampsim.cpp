// ampsim: simulated amplifiers on a pseudo-terminal, for learning and for testing without hardware.
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "demo/ampsim_options.h"
#include "demo/ampsim_session.h"
#include "demo/faults.h"
#include "platform/posix/system_clock.h"

namespace {

constexpr int k_usage_error = 2;

int fail(int code, const std::string& why) {
    std::cerr << "ampsim: " << why << "\n";
    return code;
}

// A descriptor that becomes readable when the program is asked to end. The signals are blocked, so
// that they arrive nowhere else; a hang-up that nohup made ignored stays so.
int watch_stop_signals() {
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    struct sigaction hang_up {};
    if (::sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler != SIG_IGN)
        sigaddset(&stop, SIGHUP);
    if (::sigprocmask(SIG_BLOCK, &stop, nullptr) != 0)
        return -1;
    // A closed pipe shows as a failed write, a background job's terminal as a failed read.
    for (const int signal : {SIGPIPE, SIGTTIN}) {
        if (std::signal(signal, SIG_IGN) == SIG_ERR)
            return -1;
    }
    return ::signalfd(-1, &stop, SFD_CLOEXEC | SFD_NONBLOCK);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace ampdesk;
    const demo::AmpsimOptions options = demo::parse_ampsim_options({argv + 1, argv + argc});
    if (!options.error.empty())
        return fail(k_usage_error, options.error + "\nTry ampsim --help");
    if (options.help) {
        std::cout << demo::ampsim_usage();
        return 0;
    }
    SystemClock clock;
    demo::SimBus bus(clock, options.byte_time);
    for (const demo::SimModel& model : options.models) bus.add(model);
    for (const std::string& line : options.faults) {
        const demo::FaultAnswer answer = demo::make_fault(bus, line);
        if (answer.text != "ok")
            return fail(k_usage_error, "--fault " + line + ": " + answer.text);
        if (answer.quit)
            return 0;
    }
    const int stop = watch_stop_signals();
    if (stop < 0)
        return fail(1, "signals cannot be watched");
    demo::AmpsimSession session(bus, clock);
    const std::string problem = session.open(options.link);
    if (!problem.empty())
        return fail(1, problem);
    std::cout << session.device() << std::endl;
    const bool ended_well = session.run(STDIN_FILENO, STDOUT_FILENO, stop);
    return ended_well ? 0 : fail(1, "the pseudo-terminal failed");
}
