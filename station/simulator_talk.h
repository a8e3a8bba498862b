// Faults of simulated amplifiers, as the windows and the station speak of them. Values only, texts in
// Latin-1.
#pragma once

#include <variant>

#include "station/simulator.h"

namespace ampdesk {

namespace act {

// From now on the faults of this one are told, or of none.
struct WatchFaults {
    std::optional<int> unit_address;
};

struct MakeFault {
    int unit_address = 0;
    std::string line{};
};

}  // namespace act

namespace notice {

// Of the one that is watched; without an address no simulated amplifier is.
struct SimulatedFaults {
    std::optional<int> unit_address{};
    std::string who{};
    std::vector<SimulatedFault> faults{};
    bool operator==(const SimulatedFaults&) const = default;
};

// What has come of MakeFault: an empty text, or what was wrong with the line.
struct FaultAnswer {
    int unit_address = 0;
    std::string text{};
};

}  // namespace notice

using SimulatorAct = std::variant<act::WatchFaults, act::MakeFault>;
using SimulatorNotice = std::variant<notice::SimulatedFaults, notice::FaultAnswer>;

}  // namespace ampdesk
