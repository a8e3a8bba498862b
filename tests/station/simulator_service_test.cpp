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
    std::string told;
    SimulatorService service(&simulator, clock, [&](const std::string& key, const SimulatorNotice& notice) {
        told += key + " ";
        if (const auto* answer = std::get_if<notice::FaultAnswer>(&notice)) {
            told += std::to_string(answer->unit_address) + ":" + answer->text + ";";
            return;
        }
        const auto& state = std::get<notice::SimulatedFaults>(notice);
        told += state.unit_address ? state.who + ":" : "nobody";
        for (const SimulatedFault& fault : state.faults) told += " " + fault.title;
        told += ";";
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
    EXPECT_EQ(take(act::WatchFaults{2}), "faults number 2:;");
    EXPECT_EQ(take(act::MakeFault{2, "a"}), " 2:;faults number 2: a;");
    EXPECT_EQ(take(act::MakeFault{2, "?"}), " 2:error;");
    EXPECT_EQ(take(act::MakeFault{1, "b"}), " 1:;");
    EXPECT_EQ(live(2s), "");
    simulator.in_force[2].clear();
    EXPECT_EQ(live(500ms), "faults number 2:;");
    simulator.looks = 0;
    live(5s);
    EXPECT_EQ(simulator.looks, 10);
    for (int i = 0; i < 2; ++i)  // who asks again has nothing to show
        EXPECT_EQ(take(act::WatchFaults{1}), "faults number 1: b;");
    for (const std::optional<int> nobody : {std::optional(7), std::optional<int>()})
        EXPECT_EQ(take(act::WatchFaults{nobody}), "faults nobody;");
    EXPECT_FALSE(service.due());
}

}  // namespace
}  // namespace ampdesk
