// The one table of faults that can be made on simulated amplifiers, by name: the simulator's command
// lines and the fault dialog both use it.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "demo/sim_bus.h"

namespace ampdesk::demo {

struct Fault {
    std::string_view name;
    std::string_view arguments;  // as the help shows them; empty when it takes none
    std::string_view help;       // one line
    // Makes the fault. Returns an empty text, or what is wrong with the argument; nothing has
    // changed then.
    std::string (*make)(SimAmplifier&, std::string_view argument);
    bool ends_program = false;  // of ampsim; a dialog leaves it out
};

std::span<const Fault> fault_table();

struct FaultAnswer {
    std::string text;   // "ok" or "error: …"
    bool quit = false;  // the program was asked to end
};

// Carries out one command line: an optional "@ADDRESS", a fault's name and its argument. Without the
// address it goes to every amplifier of the bus. Blanks around the parts do not matter.
FaultAnswer make_fault(const SimBus& bus, std::string_view line);

}  // namespace ampdesk::demo
