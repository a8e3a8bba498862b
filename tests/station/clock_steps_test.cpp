// The clock of the PC passes midnight, is put right or changes to summer time, or the PC sleeps for
// hours, while the program is at something.

#include "demo/faults.h"
#include "terminal/terminal.h"
#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"
#include "tests/station/rig.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/modem_port.h"
#include "tests/terminal/transfer_rig.h"

namespace ampdesk {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using namespace std::chrono_literals;

constexpr std::chrono::hours k_year{365 * 24};

struct ClockStep {
    const char* name;
    std::chrono::seconds wall{};           // that the wall clock is put on
    std::chrono::seconds asleep{};         // that pass at once on both clocks
    std::chrono::hours time_of_day = 12h;  // when it happens
};

const ClockStep k_steps[] = {
    {.name = "Midnight", .time_of_day = 24h},
    {.name = "SummerTimeBegins", .wall = 1h, .time_of_day = 2h},
    {.name = "SummerTimeEnds", .wall = -1h, .time_of_day = 3h},
    {.name = "SecondsForward", .wall = 10s},
    {.name = "SecondsBack", .wall = -10s},
    {.name = "AYearForward", .wall = k_year},
    {.name = "AYearBack", .wall = -k_year},
    {.name = "HoursOfSleep", .asleep = 8h},
    {.name = "ADayOfSleep", .asleep = 24h},
};

std::ostream& operator<<(std::ostream& out, const ClockStep& step) {
    return out << step.name;
}

// A line on which something happens in the middle of the wait for an answer.
class SteppedPort : public ScriptedPort {
  public:
    SteppedPort(ManualClock& clock, std::function<void()> step)
        : ScriptedPort(clock), clock_(clock), step_(std::move(step)) {}

    PortError write(std::string_view bytes, Instant deadline) override {
        sent = clock_.now();
        waiting_ = true;
        return ScriptedPort::write(bytes, deadline);
    }
    WaitResult wait_readable(Instant deadline) override {
        if (std::exchange(waiting_, false))
            step_();
        return ScriptedPort::wait_readable(deadline);
    }
    Instant sent{};

  private:
    ManualClock& clock_;
    std::function<void()> step_;
    bool waiting_ = false;
};

class ClockSteps : public StationTest, public testing::WithParamInterface<ClockStep> {
  protected:
    // To be called that long before the step.
    void begin(Duration lead) { clock.set_wall(GetParam().time_of_day - lead); }
    static void step(ManualClock& stepped) {
        stepped.step_wall(GetParam().wall);
        stepped.advance(GetParam().asleep);
    }
    const milliseconds asleep = GetParam().asleep;
};

// A wait that is cut or stretched by the wall clock, or an answer that came in time and is thrown away
// because the PC slept.
TEST_P(ClockSteps, AnExchangeUnderWay) {
    SteppedPort line(clock, [this] {
        clock.advance(100ms);
        step(clock);
    });
    BusLink link(line, clock);
    link.open_bus_port("COM2:", 9600, 0, 8, 1);
    const struct {
        bool text;
        std::string answer;  // in two pieces, both after the step
        int takes, result;
    } table[] = {{false, hex_bytes("06 01 04 11 61 62 63 AB BA"), 900, 9},
                 {false, "", 1000, 0},
                 {true, "RDBAND=1\x03\r", 390, 0},
                 {false, hex_bytes("06 01 04 11 61 62 63 AB BA"), 900, 9}};
    for (const auto& row : table) {
        SCOPED_TRACE(row.takes);
        begin(100ms);
        line.answer(
            {{150ms, row.answer.substr(0, 4)},
             {milliseconds(row.takes), row.answer.substr(std::min<std::size_t>(4, row.answer.size()))}});
        std::string reply;
        EXPECT_EQ(row.text ? link.text_command(1, "RDBAND", reply) : link.bus_command(1, "\x11", reply),
                  row.result);
        EXPECT_EQ(reply, row.answer);
        EXPECT_EQ(clock.now() - line.sent, std::max(milliseconds(row.takes), asleep + 100ms));
    }
}

// Visits that stop until the clock has caught up, or that are all made up for at once; a dead amplifier
// that is not looked for any more.
TEST_P(ClockSteps, ThePollingLoop) {
    begin(24s);
    open({1, 2, 3, 4});
    sim.find(4)->line.silent = true;
    poll(24s);
    while (!bus.under_way()) poll(1ms);
    step(clock);
    const Instant start = clock.now();
    port.status_requests.clear();
    poll(20s);
    for (const int address : {1, 2, 3}) {
        const std::vector<Instant>& visits = port.status_requests[address];
        EXPECT_NEAR(static_cast<double>(visits.size()), 42, 3) << "one in 500 ms and one before each look";
        EXPECT_LE(visits.front() - start, 1100ms) << "a look may come in between, a patient one, too";
        EXPECT_LE(longest_gap(address), 1100);
    }
    EXPECT_NEAR(static_cast<double>(port.status_requests[4].size()), 4, 1);
}

// An alarm that beeps no more, or without end. One beep may come early: its spacing is kept in seconds
// since midnight.
TEST_P(ClockSteps, TheSpacingOfTheAlarm) {
    begin(20s);
    open({1});
    demo::make_fault(sim, "alarm Hot");
    poll(20s);
    step(clock);
    person.beeps.clear();
    std::vector<Instant> beeps{clock.now()};
    while (clock.now() < beeps.front() + 70s) {
        poll(50ms);
        if (person.beeps.size() == beeps.size())
            beeps.push_back(clock.now());
        ASSERT_LT(person.beeps.size(), beeps.size());
    }
    ASSERT_GE(beeps.size(), 5U);
    for (std::size_t i = 1; i < beeps.size(); ++i) {
        EXPECT_LE(beeps[i] - beeps[i - 1], 16s);
        EXPECT_GE(beeps[i] - beeps[i - 1], i == 1 ? 0s : 15s);
    }
}

// A modem that is left with DTR low, or gets it back too early.
TEST_P(ClockSteps, HangingUp) {
    ModemPort modem(clock);
    modem.has_dtr = true;
    TerminalLine line(&modem, clock);
    Terminal terminal(line, bus);
    line.open({.device = "modem"});
    begin(200ms);
    const Instant start = clock.now();
    ASSERT_TRUE(terminal.hang_up());
    clock.advance(200ms);
    terminal.tick();
    step(clock);
    while (const auto next = terminal.next_tick()) {
        clock.advance(*next);
        terminal.tick();
    }
    EXPECT_EQ(modem.dtr, (std::vector<std::pair<Instant, bool>>{
                             {start, false}, {start + std::max(500ms, asleep + 200ms), true}}));
}

// A transfer that ends, or loses or doubles a block, when the clock jumps in the middle of one.
TEST_P(ClockSteps, AnXmodemTransfer) {
    TransferRig rig;
    rig.clock.set_wall(GetParam().time_of_day - 100ms);
    rig.forth.spoil = [&](std::string& bytes, std::size_t offset) {
        if (offset != std::size_t{2} * 133)
            return;
        step(rig.clock);
        bytes.resize(50);
    };
    const std::string file = sample_file(1000);
    XmodemSender sender(file, 1s, rig.clock.now());
    XmodemReceiver receiver(rig.clock.now());
    for (int i = 0; i < 2; ++i) rig.run(sender, receiver);  // the sleep ends the first
    EXPECT_EQ(sender.state(), TransferState::done) << sender.message();
    EXPECT_EQ(receiver.file(), filled_up(file));
}

INSTANTIATE_TEST_SUITE_P(Clock, ClockSteps, testing::ValuesIn(k_steps),
                         [](const testing::TestParamInfo<ClockStep>& step) { return step.param.name; });

}  // namespace
}  // namespace ampdesk
