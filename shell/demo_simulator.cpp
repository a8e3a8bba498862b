#include "shell/demo_simulator.h"

#include "demo/faults.h"

namespace ampdesk {

std::optional<std::string> DemoSimulator::who(int unit_address) const {
    const demo::SimAmplifier* amplifier = bus_.find(unit_address);
    if (amplifier == nullptr)
        return std::nullopt;
    const demo::SimModel& model = amplifier->model();
    return "Amplifier " + std::to_string(model.serial) + ", address " + std::to_string(model.address) + ", " +
           model.name;
}

std::vector<SimulatedFault> DemoSimulator::faults(int unit_address) const {
    std::vector<SimulatedFault> found;
    const demo::SimAmplifier* amplifier = bus_.find(unit_address);
    if (amplifier == nullptr)
        return found;
    for (const demo::ActiveFault& active : demo::active_faults(*amplifier)) {
        const std::string argument = active.argument.empty() ? "" : ": " + active.argument;
        found.push_back({.title = demo::listed_title(*active.fault) + argument, .clear = active.clear});
    }
    return found;
}

std::string DemoSimulator::make_fault(int unit_address, const std::string& line) {
    const std::string said = demo::make_fault(bus_, "@" + std::to_string(unit_address) + " " + line).text;
    return said == "ok" ? std::string() : said;
}

}  // namespace ampdesk
