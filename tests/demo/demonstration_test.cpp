// The demonstration: what its amplifiers say at the start and what its files hold.
#include "demo/demonstration.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk::demo {
namespace {

// A first picture in which every amplifier looks the same, or one that the station cannot tell apart.
TEST(Demonstration, ShowsOneOfEachKind) {
    ManualClock clock;
    SimBus bus(clock);
    add_demonstration(bus, 99);
    const std::tuple<int, const char*, const char*, const char*> cases[] = {
        {1, "00 11 02 00 00 02", "0,Standby RF off", "JEX TWTA*C/KU/X*1001*Simulator Rev 1.0"},
        {2, "00 11 00 00 00 00", "0,Warm-up 0:20", "JEX TWTA*KU/DBS*1002*Simulator Rev 1.0"},
        {3, "0C 0F 01 00 00 00", "0,Transmit", "JEX TWTA*KU*1003*Simulator Rev 1.0"},
        {99, "0C 0F 01 00 00 00", "0,Transmit", "JEX TWTA*KU*1099*Simulator Rev 1.0"},
    };
    for (const auto& [address, status, alarm_state, identity] : cases) {
        SCOPED_TRACE(address);
        ASSERT_NE(bus.find(address), nullptr);
        SimAmplifier& amplifier = *bus.find(address);
        EXPECT_EQ(to_hex(amplifier.status_block()), status);
        EXPECT_EQ(amplifier.alarm_state(), alarm_state);
        EXPECT_EQ(amplifier.identity_text(), identity);
        // The filament current, 1.5 A and more, as a negative word.
        EXPECT_EQ(amplifier.analog_block()[11] & 0xF0, 0xF0);
    }
    EXPECT_EQ(bus.find(100), nullptr);
}

// A file that the station does not open, or that leads it to the wrong amplifier.
TEST(Demonstration, WritesTheFilesOfTheStation) {
    const ScratchFolder folder;
    EXPECT_EQ(write_demonstration_files(folder.path(), 2),
              (std::vector<std::string>{"com1001.dat", "com1002.dat"}));
    const std::pair<const char*, const char*> files[] = {
        {"com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n"},
        {"com1002.dat", "RS-485\r\nCOM1:\r\n6\r\n2\r\n"},
        {"rs485.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n"},
        {"ampdesk.ini", "[amplifier]\r\nnegative_words=signed\r\nreply_address=checked\r\n"},
    };
    for (const auto& [name, content] : files) EXPECT_EQ(file_bytes(folder / name), content) << name;
}

}  // namespace
}  // namespace ampdesk::demo
