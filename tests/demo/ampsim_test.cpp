// ampsim: its arguments, and the program itself on its pseudo-terminal; and the demonstration: what its
// amplifiers say at the start and what its files hold.
#include <gtest/gtest.h>

#include <filesystem>

#include "demo/ampsim_options.h"
#include "demo/demonstration.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"
#include "tests/support/running_ampsim.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk::demo {
namespace {

TEST(AmpsimOptions, MakesOneAmplifierForEachAddress) {
    const AmpsimOptions options = parse_ampsim_options(
        {"--address", "3,17", "--model=KU/K 400W", "--serial", "500", "--baud", "9600", "--signed", "--link",
         "/tmp/amp", "--fault", "silent:on", "--fault=@17 shutdown:12 a:b"});
    EXPECT_EQ(options.error, "");
    std::string models;
    for (const SimModel& m : options.models)
        models += std::to_string(m.address) + " " + std::to_string(m.serial) + " " + m.name +
                  (m.signed_words ? "-|" : "|");
    EXPECT_EQ(models, "3 500 KU/K 400W-|17 501 KU/K 400W-|");
    EXPECT_EQ(options.byte_time, std::chrono::nanoseconds(1'041'666));
    EXPECT_EQ(options.link, "/tmp/amp");
    EXPECT_EQ(options.faults, (std::vector<std::string>{"silent on", "@17 shutdown 12 a:b"}));
}

// A mistyped argument that is passed over.
TEST(AmpsimOptions, TellsMistakes) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "--address is missing"},
        {{"--address"}, "--address wants a value: N[,N...]"},
        {{"--address", "1,2,1"}, "--address has 1 twice"},
        {{"--address", "1", "--serial", "x"}, "--serial wants a number from 1 to 2147483548"},
        {{"--address", "1", "--signed=yes"}, "--signed takes no value"},
        {{"--address", "1", "extra"}, "extra is not known"}};
    for (const auto& [arguments, error] : cases) EXPECT_EQ(parse_ampsim_options(arguments).error, error);
}

// One station's visit: opens the device, sends a status request, returns what comes, hangs up.
std::string ask_status(const std::string& device, int milliseconds) {
    const int line = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    const std::string request = hex_bytes("01 05 01 11 D0 61");
    EXPECT_EQ(::write(line, request.data(), request.size()), 6) << device;
    const std::string reply = read_some(line, 12, milliseconds);
    ::close(line);
    return to_hex(reply);
}

// A simulator that prints something else first, ends with its station or its input, ignores its
// fault commands, or leaves its link behind.
TEST(Ampsim, ServesStationsUntilItIsToldToEnd) {
    const ScratchFolder folder;
    const std::string link = folder / "link";
    std::filesystem::create_symlink("/nowhere/at/all", link);  // left behind by one that was killed
    const std::string status = "06 05 07 11 00 11 02 00 00 02 E3 D2";
    RunningAmpsim ampsim({"--address", "5", "--link", link, "--baud", "19200"});
    const std::string device = ampsim.answer();
    EXPECT_EQ(std::filesystem::read_symlink(link), device);
    EXPECT_EQ(ask_status(device, 10'000), status);
    EXPECT_EQ(ask_status(link, 10'000), status);  // the first one's hang-up has changed nothing
    EXPECT_EQ(ampsim.command("silent on"), "ok");
    EXPECT_EQ(ask_status(device, 100), "");
    EXPECT_EQ(ampsim.command("silent maybe"), "error: silent wants on or off");
    for (const char* blank : {"", "  ", "\r", "@5"}) EXPECT_EQ(ampsim.command(blank), "error: no command");
    EXPECT_EQ(ampsim.command("silent off"), "ok");
    ampsim.end_its_input();
    EXPECT_EQ(ask_status(device, 10'000), status);
    EXPECT_EQ(ampsim.receive(1, 0), "");  // the end of the input is no line
    EXPECT_EQ(ampsim.end(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(link));
}

// A "quit" that does not; a file of somebody else's that is deleted to make room for the link.
TEST(Ampsim, QuitsAndLeavesWhatIsNotAStaleLinkAlone) {
    RunningAmpsim quitting({"--address", "5"});
    quitting.answer();
    EXPECT_EQ(quitting.command("quit"), "ok");
    EXPECT_EQ(quitting.end(), 0);
    const ScratchFolder folder;
    const std::string target = folder / "other";
    std::filesystem::create_symlink("/dev/null", target);
    RunningAmpsim ampsim({"--address", "5", "--link", target});
    EXPECT_EQ(ampsim.end(), 1);
    EXPECT_EQ(std::filesystem::read_symlink(target), "/dev/null");
}

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
