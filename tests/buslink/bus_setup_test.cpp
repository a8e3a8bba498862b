// The setup dialogs' rules and their file.
#include "buslink/bus_setup.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "buslink/settings_files.h"
#include "platform/text_file.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

class BusSetupTest : public testing::Test {
  protected:
    ScratchFolder folder;
    RecordingOperator person;
};

TEST_F(BusSetupTest, the_text_rules_take_exactly_what_is_offered) {
    for (const auto* good : {"COM1:", "COM2:", "COM3:", "COM4:"}) EXPECT_TRUE(accepted_port(good)) << good;
    for (const auto* bad : {"COM5:", "com1:", "COM1", "COM1: ", ""}) EXPECT_FALSE(accepted_port(bad)) << bad;
    for (const auto* good : {"0", "99", " 7"}) EXPECT_TRUE(accepted_address(good)) << good;
    for (const auto* bad : {"100", "-1", "99.5", "", " "}) EXPECT_FALSE(accepted_address(bad)) << bad;
    EXPECT_EQ(checked_port("com1:", person), "COM2:");
    EXPECT_EQ(checked_address("100", person), "1");
    EXPECT_EQ(checked_port("COM4:", person) + checked_address("0", person), "COM4:0");
    EXPECT_EQ(person.take_texts(), (Texts{"Invalid Com Port", "Invalid Unit Address"}));
}

// A torn or foreign settings file must never select a line speed or address by accident.
TEST_F(BusSetupTest, loads_what_the_file_holds_and_else_the_defaults) {
    const BusChoices defaults;
    const struct {
        const char* name;
        std::optional<Texts> lines;
        BusChoices expected;
    } cases[] = {
        {"missing", std::nullopt, defaults},
        {"wrong title", Texts{"RS-422", "COM3:", "4", "12"}, defaults},
        {"empty", Texts{}, defaults},
        {"whole", Texts{"RS-485", "COM3:", " 4", "12"}, {.port = "COM3:", .address = "12", .baud = 4}},
        {"ends after the title", Texts{"RS-485"}, {.address = ""}},
        {"ends after the port", Texts{"RS-485", "COM3:"}, {.port = "COM3:", .address = ""}},
        {"a blank address", Texts{"RS-485", "COM3:", "4", " "}, {.port = "COM3:", .address = "", .baud = 4}},
        {"no such baud code", Texts{"RS-485", "COM1:", "8", "12"}, {.port = "COM1:", .address = "12"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = folder / "rs485.dat";
        std::filesystem::remove(path);
        if (c.lines)
            write_text_lines(path, *c.lines);
        EXPECT_EQ(load_bus_choices(path, person), c.expected);
        EXPECT_EQ(person.take_texts(), Texts{});
    }
}

// Another order of lines, other line ends or a lost line would be read by no other program.
TEST_F(BusSetupTest, saves_accepted_texts_only_and_tells_a_failure) {
    save_bus_choices(folder / "rs485.dat", {.port = "COM4:", .address = "42", .baud = 7}, person);
    EXPECT_EQ(file_bytes(folder / "rs485.dat"), "RS-485\r\nCOM4:\r\n7\r\n42\r\n");
    save_bus_choices(folder / "rs485.dat", {.port = "COM9:", .address = "100"}, person);
    EXPECT_EQ(load_bus_choices(folder / "rs485.dat", person), BusChoices{});
    EXPECT_EQ(person.take_texts(), Texts{});
    save_bus_choices(folder / "gone/rs485.dat", {}, person);
    EXPECT_EQ(person.take_texts().size(), 1U);
}

}  // namespace
}  // namespace ampdesk
