// OK of both setup dialogs, on a port in memory.
#include "station/setups.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/text_frame.h"
#include "platform/text_file.h"
#include "station/station.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/scripted_port.h"
#include "tests/support/sent_frame.h"

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

class Setups : public testing::Test {
  protected:
    Setups() {
        services.options.folder = folder.path();
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

    // Until the dialog has its result.
    SetupResult ok(BusSetup& setup, const BusChoices& choices) {
        std::optional<SetupResult> result;
        setup.on_result = [&](const SetupResult& came) { result = came; };
        setup.begin(choices);
        for (int turns = 0; !result && turns < 1000; ++turns) {
            const Instant next = station.step();
            for (const auto& [number, reply] : person.take_replies()) station.answer(number, reply);
            if (!result && port.wait_readable(std::min(next, clock.now() + std::chrono::milliseconds(50))) ==
                               WaitResult::lost)
                clock.advance(std::chrono::milliseconds(1));
        }
        setup.on_result = nullptr;
        return result.value_or(SetupResult{Outcome::close, -1});
    }
    // What went to that address.
    Texts sent_to(int address) const {
        Texts sent;
        for (const std::string& frame : port.written)
            if (sent_frame(frame).address == address)
                sent.push_back(frame);
        return sent;
    }

    ScratchFolder folder;
    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus{port, clock};
    HeadServices services{bus, clock, person, {}};
    Station station{services};
    // The amplifier's answers; empty is silence.
    std::string status, serial, identity;
};

// A step that is left out or comes twice, a failure in other words, a question that is asked in vain.
TEST_F(Setups, ForANewAmplifier) {
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
        station.close_all();
        port.written.clear();
        port.opened.clear();
        person.inputs = {c.input};
        person.prompts.clear();
        person.on_input = [&] {
            if (c.line_changes)
                bus.open_bus_port("COM1:", 1200, 0, 8, 1);
        };
        person.bands = {c.band.value_or("")};
        if (c.in_use) {
            port.open_result = {};
            bus.open_bus_port("COM3:", 4800, 0, 8, 1);
            station.new_amplifier_window(static_cast<std::int16_t>(c.taken), "1", "", false);
            port.opened.clear();
        }
        port.open_result = {c.opens ? PortError::none : PortError::in_use, c.opens ? "" : "held by x"};
        AmplifierSetup setup(station, bus, person);
        const SetupResult result = ok(setup, {.port = "COM3:", .address = "7", .baud = 5});
        EXPECT_EQ(result, c.expected);
        EXPECT_EQ(sent_to(7), c.sent);
        EXPECT_EQ(port.opened.size(), (c.in_use ? 0U : 1U) + (c.line_changes ? 1U : 0U));
        EXPECT_EQ(person.bands.size(), c.band ? 0U : 1U);
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

// Settings that are kept though they do not open, or not kept though they do.
TEST_F(Setups, ForTheLine) {
    const BusChoices choices = {
        .port = "COM1:", .address = "9", .baud = 3, .bits = 0, .stop = 1, .parity = 2};
    const std::string path = folder / "rs422.dat";
    {  // A line that cannot be opened is neither kept nor marked.
        LineSetup setup(station, bus, person, path);
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
        LineSetup setup(station, bus, person, c.path);
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
