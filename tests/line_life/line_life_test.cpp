// A station through the life of its line: unplugged, put back, halted at the far end, disturbed by
// signals. On pseudo-terminals and in real time, but where nobody answers the rest of a wait is skipped.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>

#include "demo/sim_bus.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "station/station.h"
#include "tests/platform/far_end.h"
#include "tests/support/recording_operator.h"
#include "tests/support/running_ampsim.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class SkippingClock : public SystemClock {
  public:
    Instant now() const override { return SystemClock::now() + skipped_; }
    void sleep_until(Instant instant) override { skip(instant - now()); }
    void skip(Duration length) { skipped_ += std::max(length, Duration::zero()); }

  private:
    Duration skipped_{};
};

// Waits in earnest for no longer than its patience; the rest passes at once. The far end has its turn before.
class HurriedPort : public PosixSerialPort {
  public:
    explicit HurriedPort(SkippingClock& clock) : PosixSerialPort(clock), clock_(clock) {}
    WaitResult wait_readable(Instant deadline) override {
        if (serve)
            serve();
        const WaitResult result = PosixSerialPort::wait_readable(std::min(deadline, clock_.now() + patience));
        if (result == WaitResult::timed_out)
            clock_.sleep_until(deadline);
        return result;
    }
    Duration patience = 1h;
    std::function<void()> serve;

  private:
    SkippingClock& clock_;
};

class LineLife : public testing::Test {
  protected:
    LineLife() {
        services.options.folder = folder.path();
        for (const int address : {1, 2}) bus.add({.address = address, .serial = 1000 + address});
        port.serve = [this] { serve(); };
    }
    ~LineLife() override { EXPECT_EQ(person.take_texts(), Texts{}); }
    static BusOptions ports(const std::string& device) {
        BusOptions options;
        options.ports.set(1, device);
        return options;
    }
    void open() { ASSERT_EQ(link.open_bus_port("COM1:", 19200, 0, 8, 1), 0) << link.open_failure(); }
    void plug() {
        std::filesystem::remove(name);
        std::filesystem::create_symlink(far.emplace().device(), name);
    }
    // The name goes first: the device's number may be somebody else's the next moment.
    void unplug() {
        std::filesystem::remove(name);
        far->unplug();
    }
    // Pulls the plug behind half of the sixth reply.
    void serve() {
        if (replies == 6) {
            ++replies;
            return unplug();
        }
        bus.receive(far->receive(1024, 0));
        const std::string reply = bus.take_due();
        if (!reply.empty())
            far->send(reply.substr(0, ++replies == 6 ? reply.size() / 2 : reply.size()));
    }
    // Drives the polling loop for so long; gives the longest time that one call took.
    Duration poll(Station& station, Duration length) {
        Duration longest{};
        for (const Instant end = clock.now() + length; clock.now() < end;) {
            const Instant before = clock.now();
            const Instant next = std::min(station.step(), before + 100ms);
            longest = std::max(longest, clock.now() - before);
            if (!link.under_way() || port.wait_readable(next) == WaitResult::lost)
                clock.skip(std::max<Duration>(next - clock.now(), 1ms));
        }
        return longest;
    }

    ScratchFolder folder;
    std::string name = folder / "line";
    SystemClock far_clock;
    demo::SimBus bus{far_clock};
    std::optional<FarEnd> far;
    int replies = 0;
    SkippingClock clock;
    HurriedPort port{clock};
    RecordingOperator person;
    BusLink link{port, clock, ports(name)};
    HeadServices services{link, clock, person, {}};
};

// A transfer that is cut off in the middle of a reply and does not go on when the plug is back in time; a
// byte that is lost, doubled or misplaced between an amplifier, the file and another amplifier.
TEST_F(LineLife, AnUnpluggedTransferGoesOn) {
    using Mode = NvramTransfer::Mode;
    for (const Mode mode : {Mode::read, Mode::set}) {
        replies = 0;
        plug();
        open();
        NvramTransfer transfer(mode, folder / "nv.txt", mode == Mode::read ? 1 : 2, link, person);
        transfer.start();
        while (const auto due = transfer.due()) {
            clock.sleep_until(*due);
            exchange_once(link, transfer);
            if (!port.is_connected())
                plug();
        }
        link.close_bus_port();
    }
    for (std::size_t i = 0; i < demo::SimNvram::k_blocks; ++i)
        EXPECT_EQ(bus.find(1)->nvram.read(i), bus.find(2)->nvram.read(i));
}

// The polling loop stands still, spins or ends when its line does; a head that does not come back.
TEST_F(LineLife, TheHeadOutlivesItsLine) {
    for (const bool unplugged : {true, false}) {
        SCOPED_TRACE(unplugged ? "unplugged" : "halted");
        replies = 7;
        plug();
        open();
        Station station(services);
        const auto head = station.new_amplifier_window(1, "1001", "KU", false);
        ASSERT_TRUE(head);
        poll(station, 2s);
        const std::string shown = head->panel().line(1);
        ASSERT_FALSE(head->silent());
        if (unplugged)
            unplug();
        else
            port.serve = nullptr;
        port.patience = 2ms;
        int frames = 0;
        link.on_traffic = [&](const BusTraffic& traffic) { frames += traffic.sent ? 1 : 0; };
        // At most: the write, the answer, the quiet before; twice, as a read is repeated once.
        EXPECT_LT(poll(station, 60s), 5s);
        EXPECT_TRUE(head->silent());
        EXPECT_EQ(head->panel().line(1), "RS485 Communication ");
        EXPECT_LT(frames, 40);
        link.on_traffic = nullptr;
        port.patience = 1h;
        if (unplugged)
            plug();
        port.serve = [this] { serve(); };
        poll(station, 8s);
        EXPECT_EQ(head->panel().line(1), shown);
        station.close_all();
        std::filesystem::remove(folder / "set1001.dat");
    }
}

// A signal cuts an exchange or a sleep short, is taken for an unplugged line, or starts its wait anew.
TEST_F(LineLife, AStormOfSignalsDisturbsNoExchange) {
    RunningAmpsim ampsim({"--address", "1", "--link", name});
    ampsim.answer();
    port.serve = nullptr;
    open();
    struct sigaction quiet {};
    quiet.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGALRM, &quiet, nullptr), 0);
    const itimerval every_half_ms{{0, 500}, {0, 500}};
    const itimerval never{};
    setitimer(ITIMER_REAL, &every_half_ms, nullptr);
    std::string reply;
    int answered = 0;  // in time, but the machine may be busy
    for (int i = 0; i < 100; ++i) answered += link.bus_command(1, "\x11", reply, 10s) > 0 ? 1 : 0;
    const Instant start = clock.now();
    EXPECT_EQ(link.bus_command(9, "\x11", reply, 150ms), 0);
    const Duration taken = clock.now() - start;
    const Instant awake = far_clock.now() + 50ms;
    far_clock.sleep_until(awake);
    EXPECT_GE(far_clock.now(), awake);
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(answered, 100);
    EXPECT_GE(taken, 150ms);
    EXPECT_LT(taken, 1s);
    EXPECT_TRUE(port.is_connected());
}

}  // namespace
}  // namespace ampdesk
