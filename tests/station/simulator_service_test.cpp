// What is told of the faults on simulated amplifiers, and how often it is looked.
#include "station/simulator_service.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;

class TwoAmplifiers : public Simulator {
  public:
    std::optional<std::string> who(int address) const override {
        return in_force.contains(address) ? std::optional("number " + std::to_string(address)) : std::nullopt;
    }
    std::vector<SimulatedFault> faults(int address) const override {
        ++looks;
        return in_force.at(address);
    }
    std::string make_fault(int address, const std::string& line) override {
        if (line == "?")
            return "error";
        in_force.at(address).push_back({line, "clear " + line});
        return {};
    }
    std::map<int, std::vector<SimulatedFault>> in_force{{1, {}}, {2, {}}};
    mutable int looks = 0;
};

// A fault that reaches another amplifier than the one that is shown, an end by itself that nobody sees, a
// state that is told again and again, looks that nobody wants.
TEST(SimulatorService, TellsWhatHasChangedOfTheOneThatIsWatched) {
    ManualClock clock;
    TwoAmplifiers simulator;
    std::vector<std::string> told;
    SimulatorService service(&simulator, clock, [&](const std::string& key, const SimulatorNotice& notice) {
        if (const auto* answer = std::get_if<notice::FaultAnswer>(&notice)) {
            EXPECT_EQ(key, "");
            told.push_back("answer of " + std::to_string(answer->unit_address) + ":" + answer->text);
            return;
        }
        EXPECT_EQ(key, "faults");
        const auto& state = std::get<notice::SimulatedFaults>(notice);
        std::string text = state.unit_address ? state.who + ":" : "nobody";
        for (const SimulatedFault& fault : state.faults) text += " " + fault.title;
        told.push_back(text);
    });
    const auto take = [&](const SimulatorAct& act) {
        service.take(act);
        return std::exchange(told, {});
    };
    const auto live = [&](Duration length) {
        for (const Instant end = clock.now() + length; service.due() && *service.due() <= end;) {
            clock.sleep_until(*service.due());
            service.step();
        }
        return std::exchange(told, {});
    };
    using Told = std::vector<std::string>;
    EXPECT_EQ(take(act::WatchFaults{2}), Told{"number 2:"});
    EXPECT_EQ(take(act::MakeFault{2, "a"}), (Told{"answer of 2:", "number 2: a"}));
    EXPECT_EQ(take(act::MakeFault{2, "?"}), Told{"answer of 2:error"});
    EXPECT_EQ(take(act::MakeFault{1, "b"}), Told{"answer of 1:"});
    EXPECT_EQ(live(2s), Told{});
    simulator.in_force[2].clear();
    EXPECT_EQ(live(500ms), Told{"number 2:"});
    simulator.looks = 0;
    live(5s);
    EXPECT_EQ(simulator.looks, 10);
    EXPECT_EQ(take(act::WatchFaults{1}), Told{"number 1: b"});
    EXPECT_EQ(take(act::WatchFaults{1}), Told{"number 1: b"});  // who asks again has nothing to show
    for (const std::optional<int> nobody : {std::optional(7), std::optional<int>()})
        EXPECT_EQ(take(act::WatchFaults{nobody}), Told{"nobody"});
    EXPECT_FALSE(service.due());
}

}  // namespace
}  // namespace ampdesk
