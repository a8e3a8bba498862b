// A station through the life of its line: unplugged, put back, halted at the far end, disturbed by
// signals. On pseudo-terminals and in real time, but where nobody answers the rest of a wait is skipped.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>
#include <random>

#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "platform/text_file.h"
#include "station/station.h"
#include "tests/support/recording_operator.h"
#include "tests/support/running_ampsim.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/served_line.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Mode = NvramTransfer::Mode;
using Texts = std::vector<std::string>;

class SkippingClock : public SystemClock {
  public:
    Instant now() const override { return SystemClock::now() + skipped_; }
    void sleep_until(Instant instant) override { skip(instant - now()); }
    void skip(Duration length) { skipped_ += std::max(length, Duration::zero()); }

  private:
    Duration skipped_{};
};

// Waits in earnest for no longer than its patience; the rest passes at once.
class HurriedPort : public PosixSerialPort {
  public:
    explicit HurriedPort(SkippingClock& clock) : PosixSerialPort(clock), clock_(clock) {}
    WaitResult wait_readable(Instant deadline) override {
        const WaitResult result = PosixSerialPort::wait_readable(soon(deadline));
        if (result == WaitResult::timed_out)
            clock_.sleep_until(deadline);
        return result;
    }
    PortError write(std::string_view bytes, Instant deadline) override {
        const PortError result = PosixSerialPort::write(bytes, soon(deadline));
        if (result == PortError::stalled)
            clock_.sleep_until(deadline);
        return result;
    }
    Duration patience = 1h;

  private:
    Instant soon(Instant deadline) const { return std::min(deadline, clock_.now() + patience); }
    SkippingClock& clock_;
};

class LineLife : public testing::Test {
  protected:
    LineLife() {
        bus.add({.address = 1, .serial = 1001, .noise = 0});
        services.options.folder = folder.path();
    }
    ~LineLife() override { EXPECT_EQ(person.take_texts(), Texts{}); }
    static BusOptions ports(const std::string& device) {
        BusOptions options;
        options.ports.set(1, device);
        return options;
    }
    void open() { ASSERT_EQ(link.open_bus_port("COM1:", 19200, 0, 8, 1), 0) << link.open_failure(); }
    std::int16_t ask(std::int16_t address, Duration limit = BusLink::k_reply_limit) {
        return link.bus_command(address, "\x11", reply, limit);
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
    SkippingClock clock;
    HurriedPort port{clock};
    RecordingOperator person;
    BusLink link{port, clock, ports(name)};
    HeadServices services{link, clock, person, {}};
    std::string reply;
};

class NvramLine : public LineLife {
  protected:
    Texts image(int address = 1) { return image_of(bus.find(address)->nvram); }
    static Texts image_of(const demo::SimNvram& memory) {
        Texts lines;
        for (std::size_t i = 0; const auto bytes = memory.read(i); ++i)
            lines.push_back(nvram_line({.number = static_cast<int>(i),
                                        .data = bytes->substr(0, bytes->size() - 2),
                                        .trailing = bytes->substr(bytes->size() - 2)}));
        return lines;
    }
    void plug_in(ServedLine::Fate fate = {}) {
        line = std::make_unique<ServedLine>(bus, name, std::move(fate));
    }
    void run(NvramTransfer& transfer, bool put_back = false) {
        transfer.start();
        while (const auto due = transfer.due()) {
            clock.sleep_until(*due);
            exchange_once(link, transfer);
            if (put_back && !port.is_connected() && line) {
                line->unplug();
                plug_in();
                put_back = false;
            }
        }
    }

    const std::string path = folder / "nv.txt";
    std::unique_ptr<ServedLine> line;
};

// A byte that is lost, doubled or misplaced between an amplifier, the file and another amplifier, on a
// line that spoils one reply in ten.
TEST_F(NvramLine, OneAmplifiersMemoryInAnother) {
    bus.add({.address = 2, .serial = 1002, .noise = 0});
    ASSERT_NE(image(1), image(2));
    using Spoil = void (*)(std::string&);
    const Spoil spoils[] = {
        [](std::string& bytes) { bytes.back() = static_cast<char>(bytes.back() ^ 1); },
        [](std::string& bytes) { bytes[bytes.size() / 2] = '~'; },
        [](std::string& bytes) { bytes.insert(0, "\x06\x15\x01~"); },
        [](std::string& bytes) { bytes += bytes; },
        [](std::string& bytes) { bytes.pop_back(); },
    };
    std::minstd_rand random{7};
    std::size_t spoilt = 0;
    plug_in([&](std::string& bytes) {
        if (random() % 10 == 0)
            spoils[spoilt++ % std::size(spoils)](bytes);
        return true;
    });
    open();
    for (const Mode mode : {Mode::read, Mode::set}) {
        NvramTransfer transfer(mode, path, mode == Mode::read ? 1 : 2, link, person);
        run(transfer);
        EXPECT_EQ(transfer.nvram_block, static_cast<int>(demo::SimNvram::k_blocks));
    }
    line->unplug();
    EXPECT_EQ(image(1), image(2));
    EXPECT_GE(spoilt, std::size(spoils));
}

// Where in the sixth reply the plug is pulled, and whether it is put back while the transfer tries on.
struct Pull {
    Mode mode;
    double left;  // of the reply
    bool put_back;
};
class NvramUnplugged : public NvramLine, public testing::WithParamInterface<Pull> {
  protected:
    // The blocks that the file holds.
    Texts blocks() const {
        Texts lines = read_text_lines(path);
        lines.erase(lines.begin());
        return lines;
    }
    static Texts first(const Texts& lines, std::size_t count) {
        return {lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(count)};
    }
};

// A transfer that is cut off and told as done, a block written that is not the file's, half a line in
// the file; a transfer that does not go on when the plug is back in time, or the next one that fails.
TEST_P(NvramUnplugged, StopsOrGoesOn) {
    constexpr std::size_t k_before = 5;
    const auto [mode, left, put_back] = GetParam();
    const Texts old_memory = image();
    Texts wanted = old_memory;
    if (mode == Mode::set) {
        wanted = image_of(demo::SimNvram(4711));
        Texts text = wanted;
        text.insert(text.begin(), "03-10-2026");
        write_text_lines(path, text);
    }
    std::size_t replies = 0;
    plug_in([&, part = left](std::string& bytes) {
        if (replies++ < k_before)
            return true;
        bytes.resize(static_cast<std::size_t>(static_cast<double>(bytes.size()) * part));
        return false;
    });
    open();
    const auto done = mode == Mode::read ? "nvRam Transfer was Successful" : "end of nvRam file";
    NvramTransfer transfer(mode, path, 1, link, person);
    run(transfer, put_back);
    if (!put_back) {
        EXPECT_EQ(person.take_texts(), Texts{"Cmd Receiving Error, Check Connection"});
        EXPECT_TRUE(transfer.nvram_abort);
        // A whole reply counts, unless a busy machine has read it only after the plug was pulled.
        const auto known = static_cast<std::size_t>(transfer.nvram_block);
        ASSERT_GE(known, k_before);
        ASSERT_LE(known, k_before + (left == 1 ? 1 : 0));
        EXPECT_NE(transfer.panel().status.find(" block #" + std::to_string(known) + " "), std::string::npos)
            << transfer.panel().status;
        line->unplug();
        Texts half = first(wanted, k_before + 1);  // the amplifier has carried out the sixth, too
        if (mode == Mode::set)
            half.insert(half.end(), old_memory.begin() + k_before + 1, old_memory.end());
        EXPECT_EQ(mode == Mode::read ? blocks() : image(), mode == Mode::read ? first(half, known) : half);

        plug_in();
        clock.skip(2s);
        NvramTransfer next(mode, path, 1, link, person);
        run(next);
        EXPECT_EQ(next.panel().status, done);
    } else {
        EXPECT_EQ(transfer.panel().status, done);
    }
    line->unplug();
    EXPECT_EQ(mode == Mode::read ? blocks() : image(), wanted);
}

INSTANTIATE_TEST_SUITE_P(LineLife, NvramUnplugged,
                         testing::Values(Pull{Mode::read, 0, false}, Pull{Mode::read, 0.5, false},
                                         Pull{Mode::read, 1, false}, Pull{Mode::read, 0.5, true},
                                         Pull{Mode::set, 0, false}, Pull{Mode::set, 0.5, false},
                                         Pull{Mode::set, 1, false}, Pull{Mode::set, 0.5, true}));

// An exchange that outlasts its limit, or a late answer that is taken for the answer to the next
// request: both amplifiers are asked the same.
TEST_F(LineLife, AHaltedFarEndAnswersNobodyTooLate) {
    const RunningAmpsim far({"--address", "1,2", "--serial", "500", "--link", name});
    far.answer();
    open();
    ASSERT_GT(ask(1), 0);
    far.halt(true);
    Duration longest = Duration::max();
    for (int attempt = 0; attempt < 3 && longest > 500ms; ++attempt) {  // a busy machine may delay one
        const Instant start = clock.now();
        EXPECT_EQ(ask(1, 100ms), 0);
        longest = clock.now() - start;
        EXPECT_GE(longest, 100ms);
    }
    EXPECT_LE(longest, 500ms);
    link.text_reply_timeout = 0.02F;
    EXPECT_EQ(link.text_command(1, "RDS/N", reply), 1);
    for (const bool as_text : {false, true}) {
        far.halt(false);
        ASSERT_EQ(port.wait_readable(clock.now() + 10s), WaitResult::data);
        link.text_reply_timeout = 1;
        if (as_text) {
            EXPECT_EQ(link.text_command(2, "RDS/N", reply), 0);
            EXPECT_NE(reply.find("501"), std::string::npos) << reply;
        } else {
            EXPECT_GT(ask(2), 0);
            EXPECT_EQ(reply.substr(0, 2), "\x06\x02");
        }
        EXPECT_EQ(port.wait_readable(clock.now() + 50ms), WaitResult::timed_out) << "its own answer";
        far.halt(true);
        link.text_reply_timeout = 0.02F;
        EXPECT_EQ(link.text_command(1, "RDS/N", reply), 1);
        EXPECT_EQ(ask(1, 20ms), 0);
    }
}

// The polling loop stands still, spins or ends when its line does; a head that does not come back.
TEST_F(LineLife, TheHeadOutlivesItsLine) {
    enum class Fate { unplugged, halted, full };
    for (const Fate fate : {Fate::unplugged, Fate::halted, Fate::full}) {
        SCOPED_TRACE(static_cast<int>(fate));
        port.patience = 1h;
        auto far = std::make_unique<RunningAmpsim>(Texts{"--address", "1", "--link", name});
        far->answer();
        open();
        Station station(services);
        const auto head = station.new_amplifier_window(1, "1001", "KU", false);
        ASSERT_TRUE(head);
        poll(station, 2s);
        const std::string shown = head->panel().line(1);
        ASSERT_FALSE(head->silent());
        if (fate == Fate::unplugged) {
            std::filesystem::remove(name);  // the device's number may be somebody else's the next moment
            far->end(SIGKILL);
        } else {
            far->halt(true);
        }
        // The driver makes room for a while: it hands on what it holds to the far end's.
        for (int full = 0; fate == Fate::full && full < 3; ++full) {
            for (; port.write_some(std::string(1, '\0')).value_or(0) > 0; full = 0) {
            }
            std::this_thread::sleep_for(5ms);
        }
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
        if (fate == Fate::unplugged) {
            far = std::make_unique<RunningAmpsim>(Texts{"--address", "1", "--link", name});
            far->answer();
        } else {
            far->halt(false);
        }
        poll(station, 8s);
        EXPECT_FALSE(head->silent());
        EXPECT_EQ(head->panel().line(1), shown);
        station.close_all();
        std::filesystem::remove(folder / "set1001.dat");
    }
}

// A signal cuts an exchange or a sleep short, is taken for an unplugged line, or starts its wait anew.
TEST_F(LineLife, AStormOfSignalsDisturbsNoExchange) {
    ServedLine line(bus, name);
    open();
    struct sigaction quiet {};
    struct sigaction before {};
    quiet.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGALRM, &quiet, &before), 0);
    const itimerval every_half_ms{{0, 500}, {0, 500}};
    const itimerval never{};
    setitimer(ITIMER_REAL, &every_half_ms, nullptr);
    int answered = 0;
    for (int i = 0; i < 300; ++i) answered += ask(1, 10s) > 0 ? 1 : 0;  // the machine may be busy
    const Instant start = clock.now();
    EXPECT_EQ(ask(9, 150ms), 0);
    const Duration taken = clock.now() - start;
    const Instant awake = far_clock.now() + 50ms;
    far_clock.sleep_until(awake);
    EXPECT_GE(far_clock.now(), awake);
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_EQ(answered, 300);
    EXPECT_GE(taken, 150ms);
    EXPECT_LT(taken, 1s);
    EXPECT_TRUE(port.is_connected());
}

}  // namespace
}  // namespace ampdesk
