// The clock of the PC passes midnight, is put right or changes to summer time, or the PC sleeps for
// hours, while the program is at something.
#include "demo/faults.h"
#include "tests/station/rig.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

constexpr std::chrono::hours k_year{365 * 24};

struct ClockStep {
    const char* name;
    std::chrono::seconds wall{};           // that the wall clock is put on
    std::chrono::seconds asleep{};         // that pass at once on both clocks
    std::chrono::hours time_of_day = 12h;  // when it happens
};

const ClockStep k_steps[] = {
    {.name = "Midnight", .time_of_day = 24h}, {.name = "SummerTimeEnds", .wall = -1h, .time_of_day = 3h},
    {.name = "SecondsForward", .wall = 10s},  {.name = "AYearForward", .wall = k_year},
    {.name = "AYearBack", .wall = -k_year},   {.name = "ADayOfSleep", .asleep = 24h}};

class ClockSteps : public StationTest, public testing::WithParamInterface<ClockStep> {
  protected:
    // To be called that long before the step.
    void begin(Duration lead) { clock.set_wall(GetParam().time_of_day - lead); }
    void step() {
        clock.step_wall(GetParam().wall);
        clock.advance(GetParam().asleep);
    }
};

// Visits that stop until the clock has caught up, or that are all made up for at once; a dead amplifier
// that is not looked for any more; an alarm that beeps no more, or without end.
TEST_P(ClockSteps, ThePollingLoop) {
    begin(24s);
    open({1, 2, 3, 4});
    sim.find(4)->line.silent = true;
    demo::make_fault(sim, "@1 alarm Hot");
    poll(24s);
    while (!bus.under_way()) poll(1ms);
    step();
    const Instant start = clock.now();
    port.status_requests.clear();
    person.beeps.clear();
    poll(20s);
    EXPECT_NEAR(static_cast<double>(person.beeps.size()), 2, 1) << "one may come early";
    for (const int address : {1, 2, 3}) {
        const std::vector<Instant>& visits = port.status_requests[address];
        EXPECT_NEAR(static_cast<double>(visits.size()), 42, 3) << "one in 500 ms and one before each look";
        EXPECT_LE(visits.front() - start, 1100ms) << "a look may come in between, a patient one, too";
        EXPECT_LE(longest_gap(address), 1100);
    }
    EXPECT_NEAR(static_cast<double>(port.status_requests[4].size()), 4, 1);
}

// An answer that came in time and is thrown away because the PC slept.
TEST_F(StationTest, AnAnswerFromBeforeASleepCounts) {
    ScriptedPort line(clock);
    BusLink link(line, clock);
    link.open_bus_port("COM2:", 9600, 0, 8, 1);
    const std::string answer = hex_bytes("06 01 04 11 61 62 63 AB BA");
    line.answer({{150ms, answer.substr(0, 4)}, {900ms, answer.substr(4)}});
    link.begin({.address = 1, .command = "\x11"});
    for (; !link.waiting_since(); link.poll()) line.wait_readable(link.due());
    clock.advance(24h);
    std::optional<BusReply> reply;
    while (!(reply = link.poll())) line.wait_readable(link.due());
    EXPECT_EQ(reply->bytes, answer);
}

INSTANTIATE_TEST_SUITE_P(Clock, ClockSteps, testing::ValuesIn(k_steps),
                         [](const testing::TestParamInfo<ClockStep>& step) { return step.param.name; });

}  // namespace
}  // namespace ampdesk
