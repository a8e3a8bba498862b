// Command lines from a remote station: which bytes they put on the bus and what is answered.
#include <gtest/gtest.h>

#include "buslink/remote_command.h"
#include "buslink/wire/text_frame.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

constexpr const char* k_no_response =
    "No response from amplifier, check 422/485 connection to the amplifier\r\n";
constexpr const char* k_wrong = "No message from amplifier, wrong command\r\n";
const std::string k_ask_status_5 = "01 05 06 52 44 53 54 41 54 37 29";
const std::string k_text_rfon_5 = "02 3E 30 35 20 52 46 4F 4E 03 30 31 0D";

struct Line {
    ManualClock clock;
    ScriptedPort port{clock};
    BusLink bus{port, clock};
    std::string output;
};

// Every path and text. "~" stands for the status command marker.
TEST(RemoteCommand, SendsAndAnswers) {
    const struct {
        const char* fault;
        std::string line;
        std::vector<std::string> frames;
        std::string output;
        bool answered = false;  // the last frame gets a good reply
        bool open = true;
    } table[] = {
        {"a good reply is answered by the words of a failure",
         ">05,RDSTAT",
         {k_ask_status_5},
         k_no_response,
         true},
        {"no reply is answered by an empty line", ">05,RDSTAT", {k_ask_status_5}, "\r\n"},
        {"blanks around the command", "noise >  5 ,  RDSTAT  ", {k_ask_status_5}, "\r\n"},
        {"the address is rounded", ">4.6,RDSTAT", {k_ask_status_5}, "\r\n"},
        {"a second comma belongs to the command", ">5,A,B", {"01 05 03 41 2C 42 01 70"}, "\r\n"},
        {"the comma stands before the address", "1,>05 RDSTAT", {}, k_wrong},
        {"no address at all", "05,RDSTAT", {}, k_wrong},
        {"an address that would wrap to 5 in a byte", ">261,RDSTAT", {}, k_wrong},
        {"a negative address", ">-95,RDSTAT", {}, k_wrong},
        {"an address that rounds to 100", ">99.6,RDSTAT", {}, k_wrong},
        {"an address that no integer holds", ">1e300,RDSTAT", {}, k_wrong},
        {"link switched off", ">05,RDSTAT", {}, "", false, false},
        {"link switched off, no comma", ">05 RDSTAT", {}, k_wrong, false, false},
        {"text frame, then status", "~>05,RFON", {k_text_rfon_5, k_ask_status_5}, "\r\n"},
        {"the marker behind the command", ">05,RFON~", {k_text_rfon_5, k_ask_status_5}, "\r\n"},
        {"the marker and nothing else", ">05,~", {}, k_wrong},
        {"half a line, and another one behind it", ">05,~>3,RFON", {}, k_wrong},
        {"text frame, link switched off", "~>05,RFON", {}, "", false, false},
        {"no address, which a lenient reading makes 0", ">,RDSTAT", {}, k_wrong},
        {"a number behind which there is noise", ">5x,RDSTAT", {}, k_wrong},
        {"an exponent", ">5e0,RDSTAT", {}, k_wrong},
        {"two points", ">5..0,RDSTAT", {}, k_wrong},
        {"no command", ">5, ", {}, k_wrong},
        {"a command that does not print", ">5,RDSTAT\x80", {}, k_wrong},
        {"51 characters", ">05,RDSTAT" + std::string(41, ' '), {}, k_wrong},
        {"50 characters", ">05,RDSTAT" + std::string(40, ' '), {k_ask_status_5}, "\r\n"},
        {"51 characters with the port marker", "\x02\x02RS422" + std::string(44, ' '), {}, k_wrong},
        {"port marker without RS422", "\x02\x02>05,RDSTAT", {}, ""},
    };
    for (auto row : table) {
        SCOPED_TRACE(row.fault);
        Line line;
        if (row.open)
            line.bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        if (const std::size_t at = row.line.find('~'); at != std::string::npos)
            row.line.replace(at, 1, "\x03\x03");
        if (row.answered) {
            line.port.silence(static_cast<int>(row.frames.size()) - 1);
            line.port.answer(hex_bytes("06 05 04 52 44 4F 4B B3 3F"));
        }
        RemoteCommands commands(line.bus, [&](std::string_view text) { line.output += text; });
        commands.commCommandProc(row.line);
        EXPECT_TRUE(line.port.written.empty());  // the line may be somebody else's just now
        carry_out(line.bus, commands);
        EXPECT_FALSE(commands.busy());
        std::vector<std::string> frames;
        for (const std::string& frame : line.port.written) frames.push_back(to_hex(frame));
        EXPECT_EQ(frames, row.frames);
        EXPECT_EQ(line.output, row.output);
    }
}

// The amplifier gets less or more time to carry out the text command, before it is asked for its status,
// than the 200 ms it counts on, or its late answer passes for one.
TEST(RemoteCommand, PausesBehindTheTextFrame) {
    Line line;
    line.bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    std::vector<Instant> sent;
    line.port.responder = [&](const std::string&) {
        sent.push_back(line.clock.now());
        return ScriptedPort::Answer{{std::chrono::milliseconds(210), sent.size() == 1 ? "RDSTAT\x03\r" : ""}};
    };
    RemoteCommands commands(line.bus, [&](std::string_view text) { line.output += text; });
    commands.commCommandProc("\x03\x03>07,RFON");
    carry_out(line.bus, commands);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[1] - sent[0], std::chrono::milliseconds(200));
    EXPECT_EQ(line.output, "\r\n");
}

// What somebody does between the exchanges of a line: an amplifier on another line is asked for its status,
// or the next caller gets an answer that is not his.
TEST(RemoteCommand, EndsWhenItsLineOrItsCallerIsGone) {
    for (const bool forgotten : {false, true}) {
        SCOPED_TRACE(forgotten);
        Line line;
        line.bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        RemoteCommands commands(line.bus, [&](std::string_view text) { line.output += text; });
        commands.commCommandProc("\x03\x03>05,RFON");
        ASSERT_TRUE(exchange_once(line.bus, commands));
        if (forgotten) {
            const auto status = commands.next();
            ASSERT_TRUE(status);
            commands.forget();
            EXPECT_TRUE(commands.busy());  // the exchange is
            commands.ended(line.bus.carry_out(*status));
        } else {
            line.bus.open_bus_port("COM1:", 9600, 0, 8, 1);
            EXPECT_FALSE(exchange_once(line.bus, commands));
        }
        EXPECT_FALSE(commands.busy());
        EXPECT_EQ(line.port.written.size(), forgotten ? 2U : 1U);
        EXPECT_EQ(line.output, "");
    }
}

// The port is opened with the file's own values; every failure is told to the remote station, although
// the port may be closed then, and leaves the line open that the amplifiers are on.
TEST(RemoteCommand, OpensThePortFromItsFile) {
    const std::string data = TEST_DATA;
    const PortSettings good{
        .device = "/dev/ttyS0", .baud = 19200, .parity = 'o', .data_bits = 7, .stop_bits = 2};
    const LineSettings former{"COM2:", 1200, 1, 7, 2};
    const std::string failed = "Serial Initialization Failed\r\n";
    const struct {
        const char* fault;
        std::string folder;
        bool port_there;
        std::string output;
        bool opened;
        bool line_open = false;  // and so again after a failure
        bool all_gone = false;
    } table[] = {
        {"good", data + "/rs422/good", true, "", true},
        {"good, in place of another line", data + "/rs422/good", true, "", true, true},
        {"no device", data + "/rs422/good", false, failed, false},
        {"no device, the line stays closed", data + "/rs422/good", false, failed, false, true},
        {"no device, and the line that was open is gone, too", data + "/rs422/good", false,
         failed + "The line on COM2: with 1200,o,7,2 could not be opened again\r\n", false, true, true},
        {"no file", data + "/rs422", true, "No default settings for serial port\r\n", false, true},
        {"wrong title", data + "/rs422/title", true, "Default settings for serial port corrupted\r\n", false},
        {"baud code 8", data + "/rs422/baud", true, failed, false, true},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.fault);
        Line line;
        if (row.line_open)
            line.bus.open_bus_port(former);
        if (!row.port_there)
            line.port.absent_device = good.device;
        if (row.all_gone)
            line.port.open_result = {PortError::not_found, "gone"};
        RemoteCommands commands(
            line.bus, [&](std::string_view text) { line.output += text; }, row.folder);
        commands.commCommandProc("\x02\x02RS422");
        carry_out(line.bus, commands);
        EXPECT_EQ(line.output, row.output);
        if (row.opened) {
            EXPECT_TRUE(line.bus.bus_link_on());
            EXPECT_EQ(line.port.opened.back(), good);
        } else {
            EXPECT_EQ(line.bus.settings(),
                      row.line_open && !row.all_gone ? std::optional(former) : std::nullopt);
        }
    }
}

}  // namespace
}  // namespace ampdesk
