// The demonstration's simulated bus, as the station makes faults on it.
#pragma once

#include "demo/sim_bus.h"
#include "station/simulator.h"

namespace ampdesk {

class DemoSimulator : public Simulator {
  public:
    explicit DemoSimulator(const demo::SimBus& bus) : bus_(bus) {}

    std::optional<std::string> who(int unit_address) const override;
    std::vector<SimulatedFault> faults(int unit_address) const override;
    std::string make_fault(int unit_address, const std::string& line) override;

  private:
    const demo::SimBus& bus_;
};

}  // namespace ampdesk
