// ampsim: simulated amplifiers on a pseudo-terminal, for learning and for testing without hardware.
#include <iostream>
#include <memory>

#include "demo/ampsim_options.h"
#include "demo/ampsim_session.h"
#include "demo/faults.h"
#include "platform/clock.h"

namespace {

constexpr int k_usage_error = 2;

int fail(int code, const std::string& why) {
    std::cerr << "ampsim: " << why << "\n";
    return code;
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
    const std::unique_ptr<Clock> clock = make_system_clock();
    demo::SimBus bus(*clock, options.byte_time);
    for (const demo::SimModel& model : options.models) bus.add(model);
    for (const std::string& line : options.faults) {
        const demo::FaultAnswer answer = demo::make_fault(bus, line);
        if (answer.text != "ok")
            return fail(k_usage_error, "--fault " + line + ": " + answer.text);
        if (answer.quit)
            return 0;
    }
    demo::AmpsimSession session(bus, *clock);
    const std::string problem = session.open(options.link);
    if (!problem.empty())
        return fail(1, problem);
    std::cout << session.device() << std::endl;
    const bool ended_well = session.run();
    return ended_well ? 0 : fail(1, "the pseudo-terminal failed");
}
