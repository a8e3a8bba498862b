// Makes faults on simulated amplifiers and tells which are in force: they also end by themselves.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "station/simulator_talk.h"

namespace ampdesk {

class SimulatorService {
  public:
    // A notice with a key is a state of which only the newest counts; one without is told in its turn.
    using Tell = std::function<void(std::string key, SimulatorNotice notice)>;

    // `simulator` is null where the amplifiers are real ones: nothing is done and told then.
    SimulatorService(Simulator* simulator, const Clock& clock, Tell tell)
        : simulator_(simulator), clock_(clock), tell_(std::move(tell)) {}

    void take(const SimulatorAct& act);

    // Looks when it is time to.
    void step();
    std::optional<Instant> due() const;

  private:
    void on(const act::WatchFaults& watch);
    void on(const act::MakeFault& make);
    void look();

    Simulator* simulator_;
    const Clock& clock_;
    Tell tell_;
    std::optional<int> watched_;
    notice::SimulatedFaults told_;
    Instant next_look_{};
};

}  // namespace ampdesk
