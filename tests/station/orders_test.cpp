// What the operator orders goes before everything else, whatever the line is waiting for.
#include "tests/station/rig.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

constexpr std::int16_t k_hv_on = 0;
constexpr std::int16_t k_hv_off = 1;
constexpr std::int16_t k_rf_off = 3;

// Amplifiers 1 to 4 at 9600 baud.
class Orders : public StationTest {
  protected:
    Orders() : StationTest(1042us) {
        sim.pace_commands(5ms);
        bus.on_traffic = [this](const BusTraffic& traffic) {
            if (const SentFrame order = traffic.sent ? sent_frame(traffic.bytes) : SentFrame{};
                order.setting())
                sent.push_back({order.address, order.command[1], clock.now()});
        };
        open({1, 2, 3, 4});
        poll(2s);
        sent.clear();
    }

    // Until that amplifier is asked, and the reply waited for.
    void until_asked(int address) {
        port.requests.assign(1, {});
        for (int i = 0; port.requests.back().first != address || !bus.waiting_since(); ++i) {
            ASSERT_LT(i, 20'000) << "never asked";
            poll(1ms);
        }
    }
    // It goes out soon.
    void expect_sent_at_once(int address, std::int16_t key) {
        sent.clear();
        const Instant pressed = clock.now();
        head(static_cast<std::size_t>(address)).press_hard_key(key);
        poll(500ms);
        ASSERT_FALSE(sent.empty());
        EXPECT_EQ(sent.back().address, address);
        EXPECT_LE(sent.back().at - pressed, 400ms);
    }
    struct Sent {
        int address = 0;
        int code = 0;
        Instant at{};
    };
    std::vector<Sent> sent;  // settings
};

// HV Off that waits for an amplifier that does not answer, or a read that counts as failed because it was cut
// for it.
TEST_F(Orders, GoBeforeTheReadOfADeadAmplifier) {
    sim.find(2)->line.silent = true;
    until_asked(2);
    expect_sent_at_once(1, k_hv_off);
    sim.find(2)->line.silent = false;
    poll(3s);
    EXPECT_EQ(head(2).state().link_fail_count, 0);
    EXPECT_FALSE(head(2).silent());
}

// Keys of several heads in another order than they were pressed, twice, or with a read in between; a read
// that is cut though its answer is on the way.
TEST_F(Orders, GoInTheOrderOfTheKeysAndAtOnce) {
    until_asked(3);
    const Instant pressed = clock.now();
    for (const auto& [place, key] :
         {std::pair{4U, k_hv_on}, {1U, k_rf_off}, {4U, k_hv_off}, {2U, k_hv_off}}) {
        head(place).press_hard_key(key);
        poll(1ms);
    }
    EXPECT_TRUE(sent.empty());
    port.requests.clear();
    poll(300ms);
    std::vector<std::pair<int, int>> order;
    for (const Sent& one : sent) order.emplace_back(one.address, one.code);
    EXPECT_EQ(order, (std::vector<std::pair<int, int>>{{4, 0x12}, {1, 0x17}, {4, 0x13}, {2, 0x13}}));
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(port.requests.at(i).second, '\x10');
    EXPECT_LE(sent[0].at - pressed, 150ms);
}

// An HV On that comes seconds after its key, an HV Off that does not; a wait for the reply to HV On that
// holds HV Off up, or is cut for another On-key.
TEST_F(Orders, OnKeysGrowOldAndOffKeysDoNot) {
    sim.find(1)->line.silent = true;
    until_asked(1);
    head(1).press_hard_key(k_hv_on);  // waits a full second for its reply
    poll(400ms);
    ASSERT_EQ(sent.size(), 1U);
    head(3).press_hard_key(k_hv_on);
    poll(400ms);
    EXPECT_EQ(sent.size(), 1U);
    expect_sent_at_once(2, k_hv_off);
    poll(2s);
    sent.clear();

    // Keys behind one another on an amplifier that answers none of them.
    for (int i = 0; i < 4; ++i) head(1).press_hard_key(k_hv_on);
    const auto beeps = person.beeps.size();
    const Instant pressed = clock.now();
    poll(8s);
    EXPECT_GT(person.beeps.size(), beeps);
    EXPECT_TRUE(person.status.ends_with("HV On not sent, it has waited too long")) << person.status;
    EXPECT_LE(sent.back().at - pressed, 2s);
    head(1).press_hard_key(k_hv_off, clock.now() - 60s);
    poll(2s);
    EXPECT_EQ(sent.back().code, 0x13);
}

// A key that is lost with its window, or an On-key that comes seconds after it.
TEST_F(Orders, OfAClosedHeadAreCarriedOut) {
    sim.find(3)->line.silent = true;
    until_asked(3);
    const Instant pressed = clock.now();
    for (const std::int16_t key : {k_hv_off, k_rf_off}) head(2).press_hard_key(key);
    station.close_window(2);
    EXPECT_TRUE(station.orders_left());
    poll(500ms);
    EXPECT_FALSE(station.orders_left());
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(std::pair(sent[0].address, sent[1].code), std::pair(2, 0x17));
    EXPECT_LE(sent[0].at - pressed, 400ms);

    sim.find(1)->line.silent = true;
    for (int i = 0; i < 8; ++i) head(1).press_hard_key(k_hv_on);
    const Instant closed = clock.now();
    station.close_window(1);
    poll(10ms);
    poll(10s);
    EXPECT_GT(sent.size(), 2U);
    EXPECT_LE(sent.back().at - closed, 2s);
}

// HV Off that waits for the exchange of a transfer with an amplifier that has gone, or for the answer to what
// nobody asks any more; an exchange of a transfer that is cut for HV On.
TEST_F(Orders, GoBeforeATransfer) {
    NvramTransfer transfer(NvramTransfer::Mode::read, folder / "nv.txt", 9, bus, person);
    transfer.start();
    station.add_guest(transfer);
    for (int i = 0; i < 3; ++i) {
        until_asked(9);
        expect_sent_at_once(1, k_hv_off);
    }
    until_asked(9);
    sent.clear();
    head(1).press_hard_key(k_hv_on);
    poll(500ms);
    EXPECT_TRUE(sent.empty());
    until_asked(9);
    station.remove_guest(transfer);
    transfer.exit();
    expect_sent_at_once(2, k_hv_off);
    person.take_texts();
}

// HV Off behind the keys of another head whose amplifier answers none of them; that one held back when it has
// answered since.
TEST_F(Orders, OfADeadAmplifierHoldUpNobody) {
    sim.find(1)->line.silent = true;
    until_asked(3);
    for (int i = 0; i < 10; ++i) head(1).press_hard_key(k_rf_off);
    const Instant pressed = clock.now();
    head(2).press_hard_key(k_hv_off);
    poll(9s);
    ASSERT_EQ(sent.size(), 11U);
    EXPECT_EQ(sent[1].address, 2);
    EXPECT_LE(sent[1].at - pressed, 400ms);

    sim.find(1)->line.silent = false;
    poll(10s);
    until_asked(3);
    sent.clear();
    for (const unsigned place : {1U, 2U}) {
        head(place).press_hard_key(k_hv_off);
        poll(1ms);
    }
    poll(300ms);
    EXPECT_EQ(sent.at(0).address, 1);
}

}  // namespace
}  // namespace ampdesk
