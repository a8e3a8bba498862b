// The setup dialogs' rules and their file.
#include "buslink/bus_setup.h"

#include <gtest/gtest.h>

#include "platform/text_file.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

TEST(BusSetup, TheTextRulesTakeExactlyWhatIsOffered) {
    RecordingOperator person;
    for (const auto* good : {"COM1:", "COM2:", "COM3:", "COM4:"}) EXPECT_TRUE(accepted_port(good)) << good;
    for (const auto* bad : {"COM5:", "com1:", "COM1", "COM1: "}) EXPECT_FALSE(accepted_port(bad)) << bad;
    for (const auto* good : {"0", "99", " 7"}) EXPECT_TRUE(accepted_address(good)) << good;
    for (const auto* bad : {"100", "-1", "99.5", "", " "}) EXPECT_FALSE(accepted_address(bad)) << bad;
    EXPECT_EQ(checked_port("com1:", person), "COM2:");
    EXPECT_EQ(checked_address("100", person), "1");
    EXPECT_EQ(checked_port("COM4:", person) + checked_address("0", person), "COM4:0");
    EXPECT_EQ(person.take_texts(), (Texts{"Invalid Com Port", "Invalid Unit Address"}));
    EXPECT_EQ(line_settings({"COM4:", "7", 3, 0, 1, 2}), (LineSettings{"COM4:", 1200, 2, 5, 2}));
}

// A torn or foreign settings file selects a line speed or address by accident; another order of lines, other
// line ends or a lost line would be read by no other program; a failure that nobody is told.
TEST(BusSetup, LoadsAndSavesWhatIsGood) {
    const ScratchFolder folder;
    const std::string path = folder / "rs485.dat";
    RecordingOperator person;
    const std::pair<Texts, BusChoices> cases[] = {
        {{"RS-422", "COM3:", "4", "12"}, {"COM2:", "1", 6}},
        {{}, {"COM2:", "1", 6}},
        {{"RS-485", "COM3:", " 4", "12"}, {"COM3:", "12", 4}},
        {{"RS-485"}, {"COM2:", "", 6}},
        {{"RS-485", "COM3:", "4", " "}, {"COM3:", "", 4}},
        {{"RS-485", "COM1:", "8", "12"}, {"COM1:", "12", 6}},
    };
    EXPECT_EQ(load_bus_choices(path, person), BusChoices{});
    for (const auto& [lines, expected] : cases) {
        write_text_lines(path, lines);
        EXPECT_EQ(load_bus_choices(path, person), expected) << lines.size();
    }
    save_bus_choices(path, {"COM4:", "42", 7}, person);
    EXPECT_EQ(file_bytes(path), "RS-485\r\nCOM4:\r\n7\r\n42\r\n");
    save_bus_choices(path, {"COM9:", "100", 0}, person);
    EXPECT_EQ(file_bytes(path), "RS-485\r\nCOM2:\r\n0\r\n1\r\n");
    EXPECT_EQ(person.take_texts(), Texts{});
    save_bus_choices(folder / "gone/rs485.dat", {}, person);
    EXPECT_EQ(load_bus_choices("/proc/self/mem", person), BusChoices{});  // cannot be read at its start
    EXPECT_EQ(person.take_texts().size(), 2U);
}

}  // namespace
}  // namespace ampdesk
