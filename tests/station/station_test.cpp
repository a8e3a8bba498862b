// The table of open heads and the loop that visits them, on simulated amplifiers.
#include <set>

#include "tests/station/rig.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using namespace std::chrono_literals;

// A new head that does not take the lowest free slot, or a table that forgets who is open.
TEST_F(StationTest, ReusesTheLowestFreeSlot) {
    open({1, 2, 3, 4});
    EXPECT_EQ(open_slots(), (std::vector{1, 2, 3, 4}));
    for (const int slot : {3, 2, 2, 0, 9}) station.close_window(slot);  // twice, and slots that never were
    EXPECT_EQ(open_slots(), (std::vector{1, 4}));
    EXPECT_FALSE(station.address_in_use(3));
    open({3, 2});
    EXPECT_EQ(open_slots(), (std::vector{1, 2, 3, 4}));
    EXPECT_EQ(station.open_heads()[1]->identity().unit_address, 3);
    EXPECT_EQ(station.find_free_slot(), 5);
    EXPECT_EQ(station.find_free_slot(), 6);
    station.close_all();
    EXPECT_EQ(station.open_count(), 0);
    station.close_all();
}

// One dead amplifier of sixteen slows the others down, piles up boxes, shows what it once was, or is
// not found again once it answers.
TEST_F(StationTest, OneDeadOfSixteenHoldsNobodyUp) {
    const std::vector<int> all = open_sixteen();
    sim.find(2)->line.silent = true;
    poll(20s);
    const auto dead = station.open_heads()[1];
    ASSERT_TRUE(dead->silent());
    EXPECT_EQ(dead->panel().line(1), "RS485 Communication ");
    port.status_requests.clear();
    poll(60s);
    EXPECT_NEAR(static_cast<double>(port.status_requests[2].size()), 12, 1);
    for (const int address : all) {
        if (address == 2)
            continue;
        EXPECT_LE(longest_gap(address), 1300) << "the twelfth look takes a second, a round a quarter";
        const auto& at = port.status_requests[address];
        int slow = 0;
        for (std::size_t i = 1; i < at.size(); ++i) slow += at[i] - at[i - 1] > 900ms ? 1 : 0;
        EXPECT_LE(slow, 1);
        EXPECT_NE(station.open_heads()[static_cast<std::size_t>(address - 1)]->panel().line(1),
                  dead->panel().line(1));
    }
    sim.find(2)->line.silent = false;
    poll(6s);
    EXPECT_FALSE(dead->silent());
    EXPECT_NE(dead->panel().line(1), "RS485 Communication ");
    port.status_requests.clear();
    poll(5s);
    for (const int address : all) EXPECT_LE(longest_gap(address), 550);
}

// On a dead line the last values would stand on the panels for minutes, one head waiting for the other; or
// it goes on being dead for a head that answers again.
TEST_F(StationTest, ADeadLineIsToldOnAllHeadsSoon) {
    const std::vector<int> all = open_sixteen();
    for (const int address : all) sim.find(address)->line.silent = true;
    poll(25s);
    for (const auto& head : station.open_heads()) EXPECT_TRUE(head->silent()) << head->identity().slot;
    for (const int address : all) sim.find(address)->line.silent = false;
    poll(10s);
    for (const auto& head : station.open_heads()) EXPECT_FALSE(head->silent()) << head->identity().slot;
}

// A reply that comes for a head which has closed meanwhile is taken by who has its slot now, or holds up the
// others.
TEST(Station, AHeadMayCloseWhileItIsAsked) {
    Rig rig(1ms);
    rig.open({1, 2, 3});
    std::set<int> closed;
    rig.station.on_window_closed = [&](ControlHead& head) { closed.insert(head.identity().slot); };
    while (!rig.bus.under_way() || rig.port.requests.back().first != 1) rig.poll(1ms);
    rig.station.close_window(1);
    rig.open({4});
    EXPECT_EQ(rig.open_slots(), (std::vector{1, 2, 3}));
    rig.port.requests.clear();
    rig.poll(2s);
    EXPECT_EQ(closed, std::set{1});
    for (const auto& [address, command] : rig.port.requests) EXPECT_NE(address, 1);
    for (const int address : {2, 3, 4}) EXPECT_LE(rig.longest_gap(address), 550);
    for (const auto& head : rig.station.open_heads()) EXPECT_FALSE(head->silent());
}

// While the box of a head's fault is open this head or the others stand still, the box comes twice, or
// what was closed meanwhile is touched afterwards.
TEST_F(StationTest, PollsOnWhileABoxIsOpen) {
    open({1, 2, 3});
    poll(2s);
    int boxes = 0;
    person.on_ask = [&](const Message&) {
        if (boxes++ > 0)
            return;
        port.status_requests.clear();
        poll(10s);
        for (const int address : {1, 2})
            EXPECT_NEAR(static_cast<double>(port.status_requests[address].size()), 20, 1);
        EXPECT_LE(longest_gap(3), 550);
        station.close_window(3);
        station.close_window(2);  // its own visit has not ended
        open({3});                // in the slot that has become free
        poll(1s);
    };
    sim.find(2)->faults.overflow_words = true;
    poll(5s);
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(person.take_texts(), Texts{"Overflow"});
    EXPECT_EQ(open_slots(), (std::vector{1, 2}));
    port.status_requests.clear();
    poll(5s);
    EXPECT_EQ(port.status_requests[2].size(), 0U);
    EXPECT_LE(longest_gap(1), 550);
    EXPECT_LE(longest_gap(3), 550);
}

// A transfer that holds the heads up, or its exchanges and theirs falling into one another.
TEST(Station, PollsOnBesideATransfer) {
    for (const milliseconds byte_time : {0ms, 1ms}) {
        SCOPED_TRACE(byte_time.count());
        Rig rig(byte_time);
        rig.open({1, 2, 3});
        int waiting_for = 0;
        rig.bus.on_traffic = [&](const BusTraffic& traffic) {
            EXPECT_TRUE(traffic.sent || traffic.address == waiting_for);
            waiting_for = traffic.address;
        };
        int transfers = 0;
        std::unique_ptr<NvramTransfer> transfer;
        const Instant end = rig.clock.now() + 20s;
        while (rig.clock.now() < end) {
            rig.poll(1ms);
            if (transfer && transfer->due())
                continue;
            transfers += transfer ? 1 : 0;
            if (transfer)
                rig.station.remove_guest(*transfer);
            transfer = std::make_unique<NvramTransfer>(NvramTransfer::Mode::read, rig.folder / "nv.txt", 2,
                                                       rig.bus, rig.person);
            transfer->start();
            rig.station.add_guest(*transfer);
        }
        for (const int address : {1, 2, 3}) {
            EXPECT_LT(rig.longest_gap(address), 700);
            EXPECT_LT(end - rig.port.status_requests[address].back(), 700ms);
        }
        EXPECT_GE(transfers, 2);
        EXPECT_EQ(rig.person.take_texts(), Rig::Texts{});
    }
}

// What was pressed while a guest told something is lost: the step that the box held up begins its own
// exchange over it.
TEST(Station, AnOrderGivenWhileAGuestTellsGoesOut) {
    struct Teller : BusGuest {
        std::function<void()> tell;
        std::optional<Instant> due() const override { return tell ? std::optional(Instant{}) : std::nullopt; }
        std::optional<BusCommand> next() override {
            std::exchange(tell, nullptr)();
            return std::nullopt;
        }
        void ended(const BusReply&) override {}
    };
    Rig rig(1ms);
    rig.open({1, 2});
    Teller teller;
    rig.station.add_guest(teller);
    std::vector<Setting> settings;
    const Subscription noted =
        rig.station.settings().subscribe([&](const Setting& setting) { settings.push_back(setting); });
    teller.tell = [&] {
        rig.station.open_heads().at(1)->press_hard_key(1);
        rig.station.step();
        EXPECT_TRUE(rig.bus.under_way());
    };
    rig.clock.advance(1s);  // all of them are due
    rig.poll(5s);
    EXPECT_FALSE(teller.tell);
    ASSERT_EQ(settings.size(), 1U);
    EXPECT_EQ(settings[0].command, "\x10\x13");
    rig.station.remove_guest(teller);
}

}  // namespace
}  // namespace ampdesk
