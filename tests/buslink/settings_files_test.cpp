// The settings files as they are found in the field, whole and damaged, and the rules of the setup dialogs.
#include <gtest/gtest.h>

#include "buslink/bus_setup.h"
#include "buslink/settings_files.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

std::string shown(const std::optional<Rs485File>& file) {
    if (!file)
        return "refused";
    const auto settings = line_settings(*file);
    const auto address = unit_address(*file);
    return file->port_name + " " + (settings ? settings_string(*settings) : "-") + " " +
           (address ? std::to_string(*address) : "-");
}

// A damaged file that is taken for a good one, wraps to some other amplifier's address, or is
// changed by being read.
TEST(Rs485Files, GoodAndBad) {
    // Port, settings and address; "-" for what cannot be used.
    const std::pair<std::string, std::string> table[] = {
        {"good", "COM3: 19200,n,8,1 12"},
        {"lf", "COM3: 19200,n,8,1 12"},
        {"blanks", "COM3: 19200,n,8,1 12"},
        {"empty", "refused"},
        {"title", "refused"},
        {"case", "refused"},
        {"binary", "refused"},
        {"truncated", "COM3: - -"},
        {"torn", "COM - -"},
        {"letters", "nowhere 110,n,8,1 0"},
        {"range", "COM9: - -"},
        {"huge_numbers", "COM1: - -"},
        {"fraction", "COM1: 9600,n,8,1 99"},
    };
    for (const auto& [name, expected] : table) {
        SCOPED_TRACE(name);
        const std::string path = TEST_DATA "/rs485/" + name + ".dat";
        const std::string before = file_bytes(path);
        EXPECT_EQ(shown(read_rs485(path)), expected);
        EXPECT_EQ(file_bytes(path), before);
    }
    EXPECT_THROW(read_rs485(TEST_DATA "/rs485/missing.dat"), RunTimeError);
    // A picture renamed to ".dat": nothing of it may stall the program or reach a message as it is.
    const ScratchFolder folder;
    EXPECT_FALSE(read_rs485(folder.put("big.dat", std::string(1 << 20, '\xFF'))).has_value());
    const auto file = read_rs485(folder.put("titled.dat", "RS-485\r\n" + std::string(1 << 20, '\x07')));
    EXPECT_EQ(file.value().port_name, std::string(40, '?'));
    // A text that is cut at a blank has none at its end either.
    const auto cut = read_rs485(folder.put("cut.dat", "RS-485\r\n" + std::string(39, 'x') + " y\r\n"));
    EXPECT_EQ(cut->port_name, std::string(39, 'x'));
    EXPECT_TRUE(read_rs485(TEST_DATA "/rs485/binary_titled.dat").has_value());
}

TEST(Rs422Files, CodesBecomeSettings) {
    const std::pair<std::string, std::string> table[] = {
        {"COM1:\r\n6\r\n3\r\n0\r\n0\r\n", "9600,n,8,1"},  {"COM1:\r\n 0\r\n 0\r\n 2\r\n 1\r\n", "110,e,5,2"},
        {"COM1:\r\n7\r\n2\r\n1\r\n0\r\n", "19200,o,7,1"}, {"COM1:\r\n8\r\n3\r\n0\r\n0\r\n", "-"},
        {"COM1:\r\n-99999\r\n3\r\n0\r\n0\r\n", "-"},      {"COM1:\r\n6\r\n4\r\n0\r\n0\r\n", "-"},
        {"COM1:\r\n6\r\n3\r\n0\r\n2\r\n", "-"},           {"COM1:\r\n6\r\n3\r\n0\r\n", "-"},
    };
    const ScratchFolder folder;
    for (const auto& [lines, expected] : table) {
        SCOPED_TRACE(lines);
        const auto file = read_rs422(folder.put("rs422.dat", "My RS-422 line\r\n" + lines));
        const auto settings = line_settings(file.value());
        EXPECT_EQ(settings ? settings_string(*settings) : "-", expected);
    }
    EXPECT_FALSE(read_rs422(folder.put("rs422.dat", "RS-485\r\nCOM1:\r\n")).has_value());
}

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
