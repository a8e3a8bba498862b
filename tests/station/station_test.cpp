// The table of open heads and the loop that visits them, on simulated amplifiers.
#include "tests/station/rig.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

struct SlowLine : StationTest {
    SlowLine() : StationTest(1ms) {}
};

// On a dead line the last values would stand on the panels for minutes, one head waiting for the other; or
// it goes on being dead for a head that answers again, or is called so for short
// silences.
TEST_F(StationTest, ADeadLineIsToldOnAllHeadsSoon) {
    const auto expect_silent = [&](bool silent) {
        for (const auto& open : station.open_heads()) EXPECT_EQ(open->silent(), silent) << open->caption();
    };
    open({1, 2});
    for (int outage = 0; outage < 6; ++outage) {
        for (const int address : {1, 2}) sim.find(address)->line.silent = true;
        poll(1500ms);
        for (const int address : {1, 2}) sim.find(address)->line.silent = false;
        poll(2s);
        expect_silent(false);
    }
    station.close_all();
    const std::vector<int> all = open_sixteen();
    for (const int address : all) sim.find(address)->line.silent = true;
    poll(25s);
    expect_silent(true);
    for (const int address : all) sim.find(address)->line.silent = false;
    poll(10s);
    expect_silent(false);
}

// A reply that comes for a head which has closed meanwhile is taken by who has its slot now, or holds up the
// others; a closed head whose address stays taken.
TEST_F(SlowLine, AHeadMayCloseWhileItIsAsked) {
    open({1, 2, 3});
    std::vector<int> closed;
    station.on_window_closed = [&](const ControlHead& head) { closed.push_back(head.identity().slot); };
    while (!bus.under_way() || port.requests.back().first != 1) poll(1ms);
    station.close_window(1);
    open({4});
    EXPECT_EQ(open_slots(), (std::vector{1, 2, 3}));
    port.requests.clear();
    poll(2s);
    EXPECT_EQ(closed, std::vector{1});
    for (const auto& [address, command] : port.requests) EXPECT_NE(address, 1);
    for (const int address : {2, 3, 4}) EXPECT_LE(longest_gap(address), 550);
    for (const auto& head : station.open_heads()) EXPECT_FALSE(head->silent());
    EXPECT_FALSE(station.address_in_use(1));
}

// A fault that is told at every visit, box upon box, or whose head or the others stand still for it; a
// display that ticks at the pace of the line.
TEST_F(StationTest, PollsOnWhileABoxIsOpen) {
    open({1, 2});
    port.status_requests.clear();
    sim.find(2)->faults.overflow_words = true;
    poll(60s);
    EXPECT_EQ(person.take_texts(), Texts{"Overflow"});
    for (const int address : {1, 2}) EXPECT_LE(longest_gap(address), 550);
    sim.find(2)->faults.overflow_words = false;
    poll(5s);
    sim.find(2)->faults.overflow_words = true;
    poll(5s);
    EXPECT_EQ(person.take_texts(), Texts{"Overflow"});
    sim.find(1)->shut_down(3, "System Shutdown");
    person.beeps.clear();
    poll(10s);
    EXPECT_NEAR(static_cast<double>(person.beeps.size()), 19, 2) << "one a tick";
}

// What is in front, or has just been opened, is as old as what nobody looks at.
TEST_F(SlowLine, TheActiveAndTheNewHeadComeFirst) {
    open_sixteen();
    station.set_active(5);
    port.requests.clear();
    poll(20s);
    const auto asked = [&](int address) {
        return std::count(port.requests.begin(), port.requests.end(), std::pair(address, '\x12'));
    };
    EXPECT_GT(asked(5), 2 * asked(6));
    sim.add({.address = 17, .serial = 1017});
    const Instant begun = clock.now();
    open({17});
    EXPECT_LE(clock.now() - begun, 1500ms);
}

// A transfer that holds the heads up, or somebody else on the line.
TEST_F(SlowLine, PollsOnBesideATransfer) {
    open({1, 2});
    NvramTransfer transfer(NvramTransfer::Mode::read, folder / "nv.txt", 9, bus, person);
    transfer.start();
    station.add_guest(transfer);
    open({3});
    EXPECT_TRUE(transfer.due());
    for (const int address : {1, 2}) EXPECT_LT(longest_gap(address), 1600);
    station.remove_guest(transfer);
}

}  // namespace
}  // namespace ampdesk
