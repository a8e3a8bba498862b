// XMODEM with an independent implementation at the other end, the programs sx and rx, over the real serial
// line. What becomes of errors on the way is in xmodem_test.cpp.
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

// Fault: files do not reach other programs or come from them, or are changed on the way.
TEST(XmodemPeer, FilesArriveWhole) {
    const std::tuple<std::vector<std::string>, std::size_t, std::size_t> cases[] = {
        {{"rx", "-q", "file"}, 0, 128},
        {{"rx", "-q", "file"}, 1024, 128},          // by the sum, blocks without filling
        {{"rx", "-q", "-c", "file"}, 34'000, 128},  // by the CRC, more blocks than numbers
        {{"sx", "-q", "-k", "file"}, 4096, 1024},   // in long blocks
        {{"sx", "-q", "file"}, 34'000, 128},
    };
    SystemClock clock;
    FarEnd far;
    PosixSerialPort port(clock);
    TerminalLine line(&port, clock);
    ASSERT_TRUE(line.open({.device = far.device()}).ok());
    const ScratchFolder folder;
    for (const auto& [command, size, block] : cases) {
        SCOPED_TRACE(command[0] + " " + std::to_string(size));
        const std::string file = sample_file(size);
        const bool sends = command[0] == "rx";
        if (!sends)
            folder.put("file", file);
        ChildProgram program(command, folder.path());
        XmodemSender sender(file, std::chrono::milliseconds(20), clock.now());
        XmodemReceiver receiver(clock.now());
        Transfer& transfer = sends ? static_cast<Transfer&>(sender) : receiver;
        const auto to_program = [&program](const std::string& bytes) {
            if (!bytes.empty())  // it may be gone
                program.send(bytes);
        };
        TransferRun run(line, transfer);
        ASSERT_TRUE(run.start());
        const Instant limit = clock.now() + std::chrono::seconds(60);
        for (Instant next_tick = clock.now(); !run.over() && clock.now() < limit;) {
            far.send(program.receive(4096, 0));
            line.pump();
            to_program(far.receive(4096, 1));
            if (clock.now() < next_tick)
                continue;
            next_tick = clock.now() + TransferRun::k_tick;
            run.tick();
        }
        to_program(far.receive(4096, 1));
        EXPECT_EQ(transfer.state(), TransferState::done) << transfer.message();
        EXPECT_EQ(program.end(), 0);
        EXPECT_EQ(sends ? file_bytes(folder / "file") : receiver.file(), filled_up(file, block));
    }
}

}  // namespace
}  // namespace ampdesk
