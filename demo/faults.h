// The one table of faults that can be made on simulated amplifiers, by name: the simulator's command
// lines and the fault dialog both use it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "demo/sim_bus.h"

namespace ampdesk::demo {

enum class FaultGroup {
    shutdowns,
    alarms,
    warning_levels,
    line_faults,
    forced_values,
    commands,  // no faults, but what is said to the simulator
};

struct Fault {
    std::string_view name;  // in a command line
    FaultGroup group;
    int number;                  // of the shutdown, where it has one, else 0
    std::string_view title;      // what a list shows
    std::string_view arguments;  // as the help shows them; empty when it takes none
    std::string_view proposals;  // arguments to offer, parted by "|", the likeliest first
    std::string_view help;       // one line

    // Makes the fault. Returns an empty text, or what is wrong with the argument; nothing has
    // changed then.
    std::string (*make)(SimAmplifier&, std::string_view argument);

    // What is in force of it, as arguments; an empty one stands for a fault that takes none. Null for
    // a command.
    std::vector<std::string> (*active)(const SimAmplifier&);

    // Ends it. `which` is the item of a fault that can be in force more than once, or empty for all.
    // Returns as `make` does. Null for a command.
    std::string (*end)(SimAmplifier&, std::string_view which);

    bool several = false;       // can be in force more than once, told apart by the first word
    bool ends_program = false;  // of ampsim
};

std::span<const Fault> fault_table();

// As a list shows it: "#12 Helix Over-Current".
std::string listed_title(const Fault& fault);

// Null when nothing has that name.
const Fault* find_fault(std::string_view name);

struct ActiveFault {
    const Fault* fault;
    std::string argument;
    std::string clear;  // the command line that ends it, without an address: "clear analog 4"
    bool operator==(const ActiveFault&) const = default;
};

// The faults in force on one amplifier, in the order of the table.
std::vector<ActiveFault> active_faults(const SimAmplifier& amplifier);

struct FaultAnswer {
    std::string text;   // "ok" or "error: …"
    bool quit = false;  // the program was asked to end
};

// Carries out one command line: an optional "@ADDRESS", a fault's name and its argument. Without the
// address it goes to every amplifier of the bus. Blanks around the parts do not matter.
FaultAnswer make_fault(const SimBus& bus, std::string_view line);

}  // namespace ampdesk::demo
