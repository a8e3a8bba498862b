#include "demo/faults.h"

#include <algorithm>

#include "demo/fault_arguments.h"

namespace ampdesk::demo {

namespace {

FaultAnswer error(const std::string& text) {
    return {.text = "error: " + text};
}

}  // namespace

std::string listed_title(const Fault& fault) {
    const std::string number = fault.number != 0 ? "#" + std::to_string(fault.number) + " " : "";
    return number + std::string(fault.title);
}

const Fault* find_fault(std::string_view name) {
    const auto table = fault_table();
    const auto fault =
        std::find_if(table.begin(), table.end(), [&](const Fault& known) { return known.name == name; });
    return fault == table.end() ? nullptr : &*fault;
}

std::vector<ActiveFault> active_faults(const SimAmplifier& amplifier) {
    std::vector<ActiveFault> found;
    for (const Fault& fault : fault_table()) {
        if (fault.active == nullptr)
            continue;
        for (const std::string& argument : fault.active(amplifier)) {
            std::string_view rest = argument;
            std::string clear = "clear " + std::string(fault.name);
            if (fault.several)
                clear += " " + std::string(take_word(rest));
            found.push_back({&fault, argument, clear});
        }
    }
    return found;
}

FaultAnswer make_fault(const SimBus& bus, std::string_view line) {
    std::vector<SimAmplifier*> targets;
    std::string_view rest = trimmed(line);
    if (!rest.empty() && rest.front() == '@') {
        const std::string_view word = take_word(rest);
        const auto address = whole_number(word.substr(1), 0, 99);
        SimAmplifier* amplifier = address ? bus.find(static_cast<int>(*address)) : nullptr;
        if (amplifier == nullptr)
            return error("no amplifier at " + std::string(word));
        targets.push_back(amplifier);
    } else {
        for (const auto& amplifier : bus.amplifiers()) targets.push_back(amplifier.get());
    }
    const std::string_view name = take_word(rest);
    if (name.empty())
        return error("no command");
    const Fault* fault = find_fault(name);
    if (fault == nullptr)
        return error("no fault is named \"" + std::string(name) + "\"");
    if (fault->arguments.empty() && !rest.empty())
        return error(std::string(name) + " takes no argument");
    for (SimAmplifier* target : targets) {
        const std::string problem = fault->make(*target, rest);
        if (!problem.empty())
            return error(std::string(name) + " " + problem);
    }
    return {.text = "ok", .quit = fault->ends_program};
}

}  // namespace ampdesk::demo
