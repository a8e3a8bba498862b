// "ampdesk.dat" and the log of the session: what is kept, and what a bad file does.
#include <gtest/gtest.h>

#include "platform/run_time_error.h"
#include "terminal/session_log.h"
#include "terminal/terminal_settings.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

// A field is read from another's line or written where it is not read; a value that cannot be is used.
TEST(TerminalSettings, KeepsWhatWasChosen) {
    const TerminalSettings all{3, 1200, 7, 2, 2, Handshake::rts_cts, false};
    const std::pair<const char*, TerminalSettings> table[] = {
        {"ampdesk settings\r\n3\r\n1200\r\n7\r\n2\r\n2\r\n2\r\n0\r\n", all},
        {"the ampdesk settings\n 3 \n 1200\n7\n2\n2\n2\n0", all},
        {"ampdesk settings\r\n5\r\n", {}},
        {"ampdesk settings\r\n0.9\r\n", {}},
        {"ampdesk settings\r\n2\r\n9601\r\n4\r\n3\r\n0\r\n3\r\n2\r\n", {.port = 2}},
        {"ampdesk settings\r\n2\r\n\r\n\r\n\r\n\r\n\r\n\r\n", {.port = 2}},
    };
    const ScratchFolder folder;
    for (const auto& [bytes, settings] : table)
        EXPECT_EQ(read_terminal_settings(folder.put("ampdesk.dat", bytes)), settings) << bytes;
    const std::string path = folder.put("ampdesk.dat", "ampdesk\r\n3\r\n");
    EXPECT_THROW(read_terminal_settings(path), RunTimeError);
    write_terminal_settings(path, all);
    EXPECT_EQ(file_bytes(path), table[0].first);
    write_terminal_settings(path, {});
    EXPECT_EQ(read_terminal_settings(path), TerminalSettings{});
    PortMap ports;
    ports.set(3, "/dev/modem");
    EXPECT_EQ(port_settings(all, ports), (PortSettings{"/dev/modem", 1200, 'e', 7, 2, Handshake::rts_cts}));
    EXPECT_EQ(port_settings({}, ports).device, "");
}

// The terminal is let onto the amplifiers' port, or kept from a port of a file that is none.
TEST(TerminalSettings, KnowsThePortsOfTheAmplifiers) {
    using Ports = std::vector<int>;
    const ScratchFolder folder;
    EXPECT_EQ(bus_port_numbers({}, folder.path()), Ports{});
    folder.put("rs422.dat", "RS-422\r\nCOM4:\r\n6\r\n3\r\n0\r\n0\r\n");
    folder.put("rs485.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
    EXPECT_EQ(bus_port_numbers({}, folder.path()), (Ports{1, 4}));
    EXPECT_EQ(bus_port_numbers(LineSettings{.port_name = "COM2:"}, folder.path()), (Ports{2, 4}));
    EXPECT_EQ(bus_port_numbers(LineSettings{.port_name = "COM4:"}, folder.path()), Ports{4});
    folder.put("rs422.dat", "something else\r\nCOM1:\r\n");
    EXPECT_EQ(bus_port_numbers({}, folder.path()), Ports{1});
}

// A direction, a time or a byte that reads as another; a line that could be taken for two; a time of
// day that may be of any day; a log that is not there and called open.
TEST(SessionLog, EveryStretchWithItsTimeAndDirection) {
    ManualClock clock;
    clock.set_wall(std::chrono::milliseconds(((9 * 60 + 5) * 60 + 7) * 1000 + 45));
    SessionLog log(clock);
    const ScratchFolder folder;
    const std::string path = folder.put("my.log", "an older log that is longer than the new one\r\n");
    log.open(path);
    log.note({true, "ATE1M0S0=1\r"});
    clock.advance(std::chrono::milliseconds(955));
    log.note({false, std::string_view("\r\n<OK>\x00\xB0~ ", 10)});
    clock.step_wall(std::chrono::hours(15));
    log.note({false, "x"});
    log.note({true, "y"});
    clock.step_wall(-std::chrono::hours(24 * 365));
    log.note({true, "z"});
    log.close();
    log.note({true, "not this"});
    EXPECT_EQ(file_bytes(path),
              "Terminal log of 2026-03-10\r\n"
              "09:05:07.045 sent     ATE1M0S0=1<0D>\r\n"
              "09:05:08.000 received <0D><0A><3C>OK><00><B0>~ \r\n"
              "Terminal log of 2026-03-11\r\n"
              "00:05:08.000 received x\r\n"
              "00:05:08.000 sent     y\r\n"
              "Terminal log of 2025-03-11\r\n"
              "00:05:08.000 sent     z\r\n");
    for (const std::string& refused : {std::string("/dev/full"), folder / "none/my.log", folder.path()}) {
        EXPECT_THROW(log.open(refused), RunTimeError) << refused;
        EXPECT_FALSE(log.is_open());
    }
}

}  // namespace
}  // namespace ampdesk
