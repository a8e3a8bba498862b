// The setup dialogs' rules, their file and both OK procedures, on a port in memory.
#include "buslink/bus_setup.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "buslink/settings_files.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/text_frame.h"
#include "platform/text_file.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

using Outcome = SetupResult::Outcome;
using Texts = std::vector<std::string>;

const std::string k_com_settings = "Com Settings Are Not Valid, Select Settings Again.";
const std::string k_address_used = "This Address Is Used, Please Pick Up Another One.";
const std::string k_status_failed = "Read Status Failed, Check the Settings";
const std::string k_bad_link =
    "Com Settings Are Probably Not Right, Select Settings Again When Not Communicating";
const std::string k_ask_serial = "Input amplifier serial number:";

class BusSetupTest : public testing::Test {
  protected:
    BusSetupTest() {
        port.responder = [this](const std::string& frame) -> ScriptedPort::Answer {
            const std::string& text = frame.find("RDS/N") != std::string::npos   ? serial
                                      : frame.find("*IDN?") != std::string::npos ? identity
                                                                                 : status;
            if (text.empty())
                return {};
            const bool binary = &text == &status;
            return {{std::chrono::milliseconds(5),
                     binary ? build_reply_frame(Crc16(), '\x06', 0, text) : text + "\x03\r"}};
        };
    }

    // All pieces, each with at most one frame.
    SetupResult ok(BusSetup& setup, const BusChoices& choices) {
        for (;;) {
            const std::size_t before = port.written.size();
            const auto result = setup.step(choices);
            EXPECT_LE(port.written.size() - before, 1U);
            if (result)
                return *result;
        }
    }

    ScratchFolder folder;
    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus{port, clock, person};
    // The amplifier's answers; empty is silence.
    std::string status, serial, identity;
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

TEST_F(BusSetupTest, ok_for_a_new_amplifier) {
    static const std::string probe = build_command_frame(Crc16(), 7, "\x11");
    static const std::string number = build_text_frame(7, "RDS/N");
    static const std::string model = build_text_frame(7, "*IDN?");
    const Texts no_number = {probe, number, number};
    const Texts no_model = {probe, number, model, model};
    const SetupResult stay{};
    const SetupResult close{.outcome = Outcome::close};
    const auto add = [](const char* found_number, const char* found_model) {
        return SetupResult{Outcome::add, 7, found_number, found_model};
    };

    struct Case {
        const char* name;
        SetupResult expected;
        Texts told{};
        Texts sent = {probe, number, model};
        std::string status = "\x11\x01";
        std::string serial = "1";
        std::string identity = "TWT*ABC 12 34*9*1";
        bool opens = true;
        bool in_use = false;
        int taken = -1;
        std::optional<std::string> input{};
        std::optional<std::string> band{};  // nothing: must not be asked
        bool line_changes = false;          // while the number is asked for
    };
    const Texts again = {probe, number, number, model};
    const Case cases[] = {
        {.name = "port fails", .expected = stay, .told = {k_com_settings}, .sent = {}, .opens = false},
        {.name = "taken", .expected = stay, .told = {k_address_used}, .sent = {}, .in_use = true, .taken = 7},
        {.name = "silent", .expected = stay, .told = {k_status_failed}, .sent = {probe}, .status = ""},
        {.name = "all well", .expected = add("123", "ABC"), .serial = "RDS/N=0123"},
        // In use, the line is not opened again, so a port that would fail does no harm.
        {.name = "in use", .expected = add("1", "ABC"), .opens = false, .in_use = true, .taken = 8},
        {.name = "long", .expected = stay, .told = {"Overflow"}, .sent = {probe, number}, .serial = "3e9"},
        {.name = "number cancelled", .expected = close, .sent = no_number, .serial = ""},
        {.name = "number typed", .expected = add("77", "ABC"), .sent = again, .serial = "", .input = "77"},
        {.name = "another line meanwhile",
         .expected = stay,
         .told = {k_status_failed},
         .sent = no_number,
         .serial = "",
         .input = "77",
         .line_changes = true},
        {.name = "no blank", .expected = add("1", ""), .identity = "*ABC"},
        {.name = "band", .expected = add("1", "K"), .sent = no_model, .identity = "", .band = "K"},
        {.name = "band cancelled", .expected = close, .sent = no_model, .identity = "", .band = ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::tie(status, serial, identity) = std::tie(c.status, c.serial, c.identity);
        port.open_result = {c.opens ? PortError::none : PortError::in_use, c.opens ? "" : "held by x"};
        port.written.clear();
        port.opened.clear();
        person.inputs = {c.input};
        person.prompts.clear();
        person.on_input = [&] {
            if (c.line_changes)
                bus.open_bus_port("COM1:", 1200, 0, 8, 1);
        };
        int bands_asked = 0;
        const auto ask_band = [&] {
            ++bands_asked;
            return c.band.value_or("");
        };
        AmplifierSetup setup(bus, person,
                             {.bus_in_use = [&] { return c.in_use; },
                              .address_in_use = [&](int address) { return address == c.taken; },
                              .ask_band = ask_band});
        const SetupResult result = ok(setup, {.port = "COM3:", .address = "7", .baud = 5});
        EXPECT_EQ(result, c.expected);
        EXPECT_EQ(port.written, c.sent);
        EXPECT_EQ(port.opened.size(), (c.in_use ? 0U : 1U) + (c.line_changes ? 1U : 0U));
        EXPECT_EQ(bands_asked, c.band ? 1 : 0);
        EXPECT_EQ(person.prompts, c.serial.empty() ? Texts{k_ask_serial} : Texts{});
        for (const Message& m : person.messages) {
            EXPECT_EQ(m.icon, c.taken == 7 ? Icon::none : Icon::exclamation);
            EXPECT_EQ(m.detail, m.text == k_com_settings ? "held by x"
                                : c.line_changes         ? "Another line has been opened meanwhile"
                                                         : "");
        }
        EXPECT_EQ(person.take_texts(), c.told);
    }
}

TEST_F(BusSetupTest, ok_for_the_line) {
    const BusChoices choices = {
        .port = "COM1:", .address = "9", .baud = 3, .bits = 0, .stop = 1, .parity = 2};
    const std::string path = folder / "rs422.dat";
    {  // A line that cannot be opened is neither kept nor marked.
        LineSetup setup(bus, person, path);
        port.open_result = {PortError::not_found, "no such device"};
        EXPECT_EQ(ok(setup, choices).outcome, Outcome::stay_open);
        EXPECT_FALSE(setup.rs422_mode());
        EXPECT_FALSE(file_exists(path));
        EXPECT_EQ(person.take_texts(), Texts{k_com_settings});
    }
    port.open_result = {};
    // An amplifier that is silent or a file that cannot be written warns and no more.
    const struct {
        const char* name;
        std::string path;
        std::string status;
        Texts texts;
    } cases[] = {
        {"answered", path, "\x11\x01", {}},
        {"silent", path, "", {k_bad_link}},
        {"no folder", folder / "gone/rs422.dat", "\x11\x01", {"Path not found"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LineSetup setup(bus, person, c.path);
        status = c.status;
        port.written.clear();
        port.opened.clear();
        EXPECT_EQ(ok(setup, choices).outcome, Outcome::close);
        EXPECT_TRUE(setup.rs422_mode());
        EXPECT_EQ(port.opened, (std::vector<PortSettings>{{"/dev/ttyS0", 1200, 'e', 5, 2}}));
        EXPECT_EQ(port.written, Texts{build_command_frame(Crc16(), 9, "\x11")});
        EXPECT_EQ(file_bytes(path), "RS-422\r\nCOM1:\r\n3\r\n0\r\n2\r\n1\r\n");
        EXPECT_EQ(person.take_texts(), c.texts);
    }
}

}  // namespace
}  // namespace ampdesk
