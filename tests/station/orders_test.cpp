// What the operator orders goes before everything else, whatever the line is waiting for.
#include <algorithm>

#include "tests/station/rig.h"
#include "tests/support/sent_frame.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;

constexpr std::int16_t k_hv_on = 0;
constexpr std::int16_t k_hv_off = 1;
constexpr std::int16_t k_rf_off = 3;

// Amplifiers 1 to 4 at 9600 baud.
class Orders : public testing::Test, protected Rig {
  protected:
    Orders() : Rig(1042us) {
        sim.pace_commands(5ms);
        bus.on_traffic = [this](const BusTraffic& traffic) {
            if (const SentFrame order = traffic.sent ? sent_frame(traffic.bytes) : SentFrame{};
                order.setting())
                sent.emplace_back(order.address, static_cast<int>(order.command[1]), clock.now());
        };
        open({1, 2, 3, 4});
        poll(2s);
        sent.clear();
    }
    ~Orders() override { EXPECT_EQ(person.take_texts(), Texts{}); }

    ControlHead& head(int address) { return *station.open_heads().at(static_cast<std::size_t>(address - 1)); }
    // Until that amplifier is asked, and the reply waited for.
    void until_asked(int address) {
        port.requests.clear();
        for (int i = 0; i < 20'000; ++i) {
            if (!port.requests.empty() && port.requests.back().first == address && bus.waiting_since())
                return;
            poll(1ms);
        }
        FAIL() << "never asked";
    }
    struct Sent {
        int address = 0;
        int code = 0;
        Instant at;
        Sent(int unit, int setting, Instant when) : address(unit), code(setting), at(when) {}
    };
    std::vector<Sent> sent;  // settings
};

// HV Off that waits for an amplifier that does not answer, or a read that counts as failed because it was cut
// for it.
TEST_F(Orders, GoBeforeTheReadOfADeadAmplifier) {
    sim.find(2)->line.silent = true;
    until_asked(2);
    const Instant pressed = clock.now();
    head(1).press_hard_key(k_hv_off);
    poll(500ms);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0].address, 1);
    EXPECT_LE(sent[0].at - pressed, 400ms);
    sim.find(2)->line.silent = false;
    poll(3s);
    EXPECT_EQ(head(2).state().link_fail_count, 0);
    EXPECT_FALSE(head(2).silent());
}

// Keys of several heads in another order than they were pressed, twice, or with a read in between.
TEST_F(Orders, GoInTheOrderOfTheKeysAndAtOnce) {
    until_asked(3);
    const Instant pressed = clock.now();
    for (const auto& [address, key] : {std::pair{4, k_hv_on}, {1, k_rf_off}, {4, k_hv_off}, {2, k_hv_off}}) {
        head(address).press_hard_key(key);
        poll(1ms);
    }
    port.requests.clear();
    poll(300ms);
    ASSERT_EQ(sent.size(), 4U);
    const std::pair<int, int> expected[] = {{4, 0x12}, {1, 0x17}, {4, 0x13}, {2, 0x13}};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(std::pair(sent[i].address, sent[i].code), expected[i]) << i;
    EXPECT_LE(sent[0].at - pressed, 150ms);
    for (std::size_t i = 0; i < 4 && i < port.requests.size(); ++i)
        EXPECT_EQ(port.requests[i].second, '\x10');
}

// An HV On that comes seconds after its key, an HV Off that does not; a wait for the reply to HV On that
// holds HV Off up.
TEST_F(Orders, OnKeysGrowOldAndOffKeysDoNot) {
    sim.find(1)->line.silent = true;
    until_asked(1);
    head(1).press_hard_key(k_hv_on);  // waits a full second for its reply
    poll(400ms);
    ASSERT_EQ(sent.size(), 1U);
    const Instant pressed = clock.now();
    head(2).press_hard_key(k_hv_off);
    poll(400ms);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_LE(sent[1].at - pressed, 350ms);
    sent.clear();

    // Three keys behind one another on an amplifier that answers none of them.
    for (const std::int16_t key : {k_hv_on, k_hv_on, k_hv_on, k_hv_on}) head(1).press_hard_key(key);
    head(2).press_hard_key(k_hv_on);
    const auto beeps = person.beeps.size();
    poll(8s);
    EXPECT_LT(sent.size(), 5U);
    EXPECT_GT(person.beeps.size(), beeps);
    EXPECT_TRUE(person.status.ends_with("HV On not sent, it has waited too long")) << person.status;
    for (const Sent& s : sent) EXPECT_LE(s.at - pressed, 4s);
}

// A key that is lost with its window.
TEST_F(Orders, OfAClosedHeadAreCarriedOut) {
    until_asked(3);
    head(2).press_hard_key(k_hv_off);
    head(2).press_hard_key(k_rf_off);
    station.close_window(2);
    EXPECT_TRUE(station.orders_left());
    poll(300ms);
    EXPECT_FALSE(station.orders_left());
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(std::pair(sent[0].address, sent[1].code), std::pair(2, 0x17));

    // On-keys that come seconds after their window has gone.
    sim.find(1)->line.silent = true;
    for (int i = 0; i < 8; ++i) head(1).press_hard_key(k_hv_on);
    const Instant pressed = clock.now();
    station.close_window(1);
    poll(10s);
    EXPECT_GT(sent.size(), 2U);
    EXPECT_LE(sent.back().at - pressed, 2s);
}

// A key that waits for the exchange of a transfer with an amplifier that has gone.
TEST_F(Orders, GoBeforeATransfer) {
    NvramTransfer transfer(NvramTransfer::Mode::read, folder / "nv.txt", 4, bus, person);
    transfer.start();
    station.add_guest(transfer);
    sim.find(4)->line.silent = true;
    for (int i = 0; i < 50; ++i) {
        sent.clear();
        const Instant pressed = clock.now();
        head(1).press_hard_key(k_hv_off);
        poll(500ms);
        ASSERT_EQ(sent.size(), 1U);
        EXPECT_LE(sent[0].at - pressed, 400ms);
        poll(std::chrono::milliseconds(37 * i % 400));
    }
    station.remove_guest(transfer);
    transfer.exit();
    person.take_texts();
}

// A key that waits for the answer to a question that nobody asks any more.
TEST_F(Orders, GoBeforeWhatAGuestHasLeftBehind) {
    NvramTransfer transfer(NvramTransfer::Mode::read, folder / "nv.txt", 9, bus, person);
    transfer.start();
    station.add_guest(transfer);
    until_asked(9);
    station.remove_guest(transfer);
    transfer.exit();
    const Instant pressed = clock.now();
    head(1).press_hard_key(k_hv_off);
    poll(1s);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_LE(sent[0].at - pressed, 400ms);
}

// HV Off behind the keys of another head whose amplifier answers none of them.
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
}

// A question that is asked on behalf of a head which is not there any more, or answered for the next one.
TEST_F(Orders, AClosedHeadWithdrawsItsQuestion) {
    folder.put("set77.dat", "Color Settings\r\n 255\r\n 0\r\n 13\r\n 0\r\n");
    station.close_window(4);
    station.new_amplifier_window(4, "77", "KU", true);
    EXPECT_EQ(person.take_texts().size(), 1U);
    poll(3s);
    station.close_window(4);
    station.new_amplifier_window(4, "77", "KU", true);
    station.close_window(4);
    EXPECT_TRUE(person.take_replies().empty());
    EXPECT_EQ(person.take_texts().size(), 1U);
}

}  // namespace
}  // namespace ampdesk
