// What is told of the faults on simulated amplifiers, and how often it is looked.
#include "station/simulator_service.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;

struct TwoAmplifiers : Simulator {
    std::optional<std::string> who(int address) const override {
        return in_force.contains(address) ? std::optional("number " + std::to_string(address)) : std::nullopt;
    }
    std::vector<SimulatedFault> faults(int address) const override { return in_force.at(address); }
    std::string make_fault(int address, const std::string& line) override {
        in_force.at(address).push_back({line, "clear " + line});
        return line == "?" ? "error" : "";
    }
    std::map<int, std::vector<SimulatedFault>> in_force{{1, {}}, {2, {}}};
};

// A fault that reaches another amplifier than the one that is shown, an end by itself that nobody sees, a
// state that is told again and again.
TEST(SimulatorService, TellsWhatHasChangedOfTheOneThatIsWatched) {
    ManualClock clock;
    TwoAmplifiers simulator;
    std::string told;
    SimulatorService service(
        &simulator, clock, [&](const std::string& /*key*/, const SimulatorNotice& notice) {
            if (const auto* answer = std::get_if<notice::FaultAnswer>(&notice)) {
                told += "answer " + std::to_string(answer->unit_address) + answer->text + ";";
                return;
            }
            const auto& state = std::get<notice::SimulatedFaults>(notice);
            told += state.who + " " + std::to_string(state.faults.size()) + ";";
        });
    const auto take = [&](const SimulatorAct& act) {
        service.take(act);
        return std::exchange(told, {});
    };
    EXPECT_EQ(take(act::WatchFaults{2}), "number 2 0;");
    EXPECT_EQ(take(act::MakeFault{2, "?"}), "answer 2error;number 2 1;");
    EXPECT_EQ(take(act::MakeFault{1, "b"}), "answer 1;");
    for (const char* said : {"", "number 2 0;"}) {
        clock.sleep_until(service.due().value());
        service.step();
        EXPECT_EQ(std::exchange(told, {}), said);
        simulator.in_force[2].clear();
    }
    for (int i = 0; i < 2; ++i)  // who asks again has nothing to show
        EXPECT_EQ(take(act::WatchFaults{1}), "number 1 1;");
    EXPECT_EQ(take(act::WatchFaults{7}), " 0;");
    EXPECT_FALSE(service.due());
}

}  // namespace
}  // namespace ampdesk
