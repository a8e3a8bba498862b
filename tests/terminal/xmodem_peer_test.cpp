// XMODEM with an independent implementation at the other end, the programs sx and rx: real processes,
// the real serial line, and a pump between the two that spoils bytes on the way.
#include <gtest/gtest.h>

#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "terminal/transfer_run.h"
#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"
#include "tests/platform/far_end.h"
#include "tests/support/child_program.h"
#include "tests/terminal/transfer_rig.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Changes every n-th byte: garbles it, the next time drops it, then doubles it. 0: none.
class Spoiler {
  public:
    explicit Spoiler(int every) : every_(every) {}
    std::string operator()(const std::string& bytes) {
        std::string spoilt;
        for (const char c : bytes) {
            if (every_ == 0 || ++count_ % every_ != 0)
                spoilt += c;
            else if (const int kind = count_ / every_ % 3; kind == 1)
                spoilt += static_cast<char>(c ^ 0x55);
            else if (kind == 0)
                spoilt.append(2, c);
        }
        return spoilt;
    }

  private:
    int every_;
    int count_ = 0;
};

class XmodemPeer : public ::testing::Test {
  protected:
    XmodemPeer() { EXPECT_TRUE(line.open({.device = far.device()}).ok()); }

    // Carries bytes between the program and the line until the transfer has ended.
    void carry(ChildProgram& program, Transfer& transfer, int spoil_program, int spoil_station) {
        Spoiler from_program(spoil_program);
        Spoiler from_station(spoil_station);
        TransferRun run(line, transfer);
        ASSERT_TRUE(run.start());
        const Instant limit = clock.now() + seconds(60);
        Instant next_tick = clock.now();
        while (!run.over() && clock.now() < limit) {
            if (const std::string bytes = from_program(program.receive(4096, 0)); !bytes.empty())
                far.send(bytes);
            line.pump();
            if (const std::string bytes = from_station(far.receive(4096, 1)); !bytes.empty())
                program.send(bytes);
            if (clock.now() < next_tick)
                continue;
            next_tick = clock.now() + TransferRun::k_tick;
            run.tick();
        }
        if (const std::string last = far.receive(4096, 1); !last.empty())
            program.send(last);
        EXPECT_EQ(transfer.state(), TransferState::done) << transfer.message();
        EXPECT_EQ(transfer.progress().errors > 0, spoil_program + spoil_station > 0);
        EXPECT_EQ(program.end(), 0);
    }

    SystemClock clock;
    FarEnd far;
    PosixSerialPort port{clock};
    TerminalLine line{&port, clock};
    ScratchFolder folder;
};

// Fault: files do not reach other programs or come from them, or are changed on the way, on a good or a
// noisy line.
TEST_F(XmodemPeer, FilesArriveWhole) {
    const struct {
        const char* name;
        std::vector<std::string> program;
        std::size_t size;
        std::size_t block;
        int spoil;
    } cases[] = {
        {"nothing sent, a good line", {"rx", "-q", "file"}, 0, 128, 0},
        {"sent with the sum, blocks without filling", {"rx", "-q", "file"}, 1024, 128, 0},
        {"sent with the CRC, more blocks than numbers, noise",
         {"rx", "-q", "-c", "file"},
         34'000,
         128,
         15'013},
        {"received in long blocks, a good line", {"sx", "-q", "-k", "file"}, 4096, 1024, 0},
        {"received, more blocks than numbers, noise", {"sx", "-q", "file"}, 34'000, 128, 10'007},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string file = sample_file(c.size);
        const bool taken = c.program[0] == "rx";
        if (!taken)
            folder.put("file", file);
        ChildProgram program(c.program, folder.path());
        XmodemSender sender(file, milliseconds(20), clock.now());
        XmodemReceiver receiver(clock.now());
        if (taken)
            carry(program, sender, 0, c.spoil);
        else
            carry(program, receiver, c.spoil, 0);
        EXPECT_EQ(taken ? file_bytes(folder / "file") : receiver.file(), filled_up(file, c.block));
    }
}

}  // namespace
}  // namespace ampdesk
