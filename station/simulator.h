// The simulated amplifiers of a demonstration, as far as faults are made on them. Texts are Latin-1.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ampdesk {

struct SimulatedFault {
    std::string title;
    std::string clear;  // the line that ends it
    bool operator==(const SimulatedFault&) const = default;
};

class Simulator {
  public:
    virtual ~Simulator() = default;

    // Who answers at that address, in words; nothing when no simulated amplifier does.
    virtual std::optional<std::string> who(int unit_address) const = 0;

    // What is in force on it; of nobody, nothing is.
    virtual std::vector<SimulatedFault> faults(int unit_address) const = 0;

    // Carries out one line, a fault's name and its argument. Empty, or what is wrong with it.
    virtual std::string make_fault(int unit_address, const std::string& line) = 0;
};

}  // namespace ampdesk
