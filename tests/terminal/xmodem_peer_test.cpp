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

// Fault: files do not reach other programs or come from them, or are changed on the way, on a good or a
// noisy line.
TEST(XmodemPeer, FilesArriveWhole) {
    const struct {
        const char* name;
        std::vector<std::string> program;
        std::size_t size;
        std::size_t block;
        int spoilt;  // every so manieth byte to who receives; 0: none
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
    SystemClock clock;
    FarEnd far;
    PosixSerialPort port(clock);
    TerminalLine line(&port, clock);
    ASSERT_TRUE(line.open({.device = far.device()}).ok());
    const ScratchFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string file = sample_file(c.size);
        const bool sends = c.program[0] == "rx";
        if (!sends)
            folder.put("file", file);
        ChildProgram program(c.program, folder.path());
        XmodemSender sender(file, std::chrono::milliseconds(20), clock.now());
        XmodemReceiver receiver(clock.now());
        Transfer& transfer = sends ? static_cast<Transfer&>(sender) : receiver;
        int count = 0;
        // Garbles a byte, the next time drops it, then doubles it.
        const auto spoil = [&](const std::string& bytes, bool to_receiver) {
            std::string spoilt;
            for (const char byte : bytes) {
                const bool hit = to_receiver && c.spoilt > 0 && ++count % c.spoilt == 0;
                const int kind = hit ? count / c.spoilt % 3 : -1;
                if (kind != 2)
                    spoilt.append(kind == 0 ? 2 : 1, kind == 1 ? static_cast<char>(byte ^ 0x55) : byte);
            }
            return spoilt;
        };
        TransferRun run(line, transfer);
        ASSERT_TRUE(run.start());
        const Instant limit = clock.now() + std::chrono::seconds(60);
        for (Instant next_tick = clock.now(); !run.over() && clock.now() < limit;) {
            far.send(spoil(program.receive(4096, 0), !sends));
            line.pump();
            program.send(spoil(far.receive(4096, 1), sends));
            if (clock.now() < next_tick)
                continue;
            next_tick = clock.now() + TransferRun::k_tick;
            run.tick();
        }
        program.send(far.receive(4096, 1));
        EXPECT_EQ(transfer.state(), TransferState::done) << transfer.message();
        EXPECT_EQ(transfer.progress().errors > 0, c.spoilt > 0);
        EXPECT_EQ(program.end(), 0);
        EXPECT_EQ(sends ? file_bytes(folder / "file") : receiver.file(), filled_up(file, c.block));
    }
}

}  // namespace
}  // namespace ampdesk
