// nvRam transfers against simulated amplifiers: over a pseudo-terminal that spoils replies, and beside
// the polling of open control heads.
#include <gtest/gtest.h>

#include <random>

#include "demo/sim_port.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "shell/station.h"
#include "tests/support/manual_clock.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/served_line.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using Mode = NvramTransfer::Mode;

void add(demo::SimBus& bus, int address) {
    bus.add({.address = address, .serial = 1000 + address, .noise = 0});
}

// One reply in ten spoilt.
class Spoiling {
  public:
    bool operator()(std::string& reply) {
        if (random_() % 10 == 0)
            spoil(reply);
        return true;
    }
    int spoilt = 0;

  private:
    void spoil(std::string& reply) {
        switch (spoilt++ % 5) {
            case 0:
                reply.back() = static_cast<char>(reply.back() ^ 1);
                break;
            case 1:
                reply[reply.size() / 2] = static_cast<char>(reply[reply.size() / 2] ^ 0x80);
                break;
            case 2:
                reply.insert(0, "\x06\x15\x01~");
                break;
            case 3:
                reply += reply;
                break;
            default:
                reply.pop_back();  // costs the station its whole second
        }
    }
    std::minstd_rand random_{7};
};

// Fault: a byte is lost, doubled or misplaced between an amplifier, the file and another amplifier.
TEST(NvramRoundTrip, OneAmplifiersMemoryInAnother) {
    ScratchFolder folder;
    SystemClock clock;
    RecordingOperator person;
    demo::SimBus bus(clock);
    add(bus, 1);
    add(bus, 2);
    std::size_t different = 0;
    const auto compare = [&] {
        different = 0;
        for (std::size_t i = 0; i < demo::SimNvram::k_blocks; ++i)
            different += bus.find(1)->nvram.read(i) != bus.find(2)->nvram.read(i) ? 1U : 0U;
    };
    compare();
    ASSERT_EQ(different, demo::SimNvram::k_blocks);
    Spoiling spoiling;
    {
        ServedLine line(bus, folder / "line", std::ref(spoiling));
        PosixSerialPort port(clock);
        BusOptions options;
        options.ports.set(1, folder / "line");
        BusLink link(port, clock, person, options);
        ASSERT_EQ(link.open_bus_port("COM1:", 19200, 0, 8, 1), 0) << link.open_failure();
        for (const Mode mode : {Mode::read, Mode::set}) {
            const std::int16_t address = mode == Mode::read ? 1 : 2;
            NvramTransfer transfer(mode, folder / "nv.txt", address, link, person);
            transfer.start();
            while (transfer.nvram_transfer_run()) {
            }
            EXPECT_EQ(transfer.panel().status,
                      mode == Mode::read ? "nvRam Transfer was Successful" : "end of nvRam file");
            EXPECT_EQ(transfer.nvram_block, static_cast<int>(demo::SimNvram::k_blocks));
        }
    }
    compare();
    EXPECT_EQ(different, 0U);
    EXPECT_GE(spoiling.spoilt, 5);
    EXPECT_TRUE(person.take_texts().empty());
}

// Fault: a transfer holds the heads up, or its exchanges and theirs fall into one another.
TEST(NvramBesidePolling, TheHeadsComeRound) {
    for (const milliseconds byte_time : {milliseconds(0), milliseconds(1)}) {
        SCOPED_TRACE(byte_time.count());
        ScratchFolder folder;
        ManualClock clock;
        RecordingOperator person;
        demo::SimBus bus(clock, byte_time);
        demo::SimPort port(bus, clock);
        BusLink link(port, clock, person);
        link.open_bus_port("COM1:", 9600, 0, 8, 1);
        HeadServices services{link, clock, person, {}};
        services.options.folder = folder.path();
        Station station(services);
        for (std::int16_t address = 1; address <= 3; ++address) {
            add(bus, address);
            ASSERT_TRUE(station.new_amplifier_window(address, std::to_string(address), "KU", false));
        }
        std::map<int, Instant> last;
        Duration longest{};
        int waiting_for = 0;
        link.on_traffic = [&](const BusTraffic& traffic) {
            if (!traffic.sent) {
                EXPECT_EQ(traffic.address, waiting_for);
                return;
            }
            waiting_for = traffic.address;
            if (traffic.bytes[3] != 0x11)  // the status read that begins every visit
                return;
            if (last.count(traffic.address) != 0)
                longest = std::max(longest, clock.now() - last[traffic.address]);
            last[traffic.address] = clock.now();
        };
        int transfers = 0;
        std::unique_ptr<NvramTransfer> transfer;
        const Instant end = clock.now() + std::chrono::seconds(20);
        Instant visit = clock.now();
        while (clock.now() < end) {
            clock.advance(milliseconds(1));  // a turn of the event loop
            if (clock.now() >= visit)
                visit = clock.now() + station.poll_windows();
            if (transfer && transfer->nvram_transfer_run())
                continue;
            transfers += transfer ? 1 : 0;
            transfer = std::make_unique<NvramTransfer>(Mode::read, folder / "nv.txt", 2, link, person);
            transfer->start();
        }
        EXPECT_EQ(last.size(), 3U);
        EXPECT_LT(longest, milliseconds(700));
        EXPECT_GE(transfers, 2);
        for (const auto& [address, when] : last) EXPECT_LT(end - when, milliseconds(700)) << address;
        EXPECT_TRUE(person.take_texts().empty());
    }
}

}  // namespace
}  // namespace ampdesk
