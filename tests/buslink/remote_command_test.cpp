// Command lines from a remote station: which bytes they put on the bus and what is answered.
#include <gtest/gtest.h>

#include "buslink/remote_command.h"
#include "tests/support/bus_rig.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;

constexpr const char* k_no_response =
    "No response from amplifier, check 422/485 connection to the amplifier\r\n";
constexpr const char* k_wrong = "No message from amplifier, wrong command\r\n";
const std::string k_ask_status_5 = "01 05 06 52 44 53 54 41 54 37 29\n";
const std::string k_text_rfon_5 = "02 3E 30 35 20 52 46 4F 4E 03 30 31 0D\n";

struct Line : BusRig {
    explicit Line(bool open = true, const std::string& folder = ".")
        : commands(
              bus, [this](std::string_view text) { output += text; }, folder) {
        bus.close_bus_port();
        if (open)
            bus.open_bus_port("COM2:", 1200, 1, 7, 2);
    }
    // Everything that has been sent.
    std::string frames() const {
        std::string text;
        for (const std::string& frame : port.written) text += to_hex(frame) + "\n";
        return text;
    }
    std::string output;
    RemoteCommands commands;
};

// Every path and text; a line of noise that reaches an amplifier; one that gets less or more time to carry
// out a text command, before it is asked for its status, than the 200 ms it counts on.
TEST(RemoteCommand, SendsAndAnswers) {
    struct Row {
        std::string line;
        std::string frames;
        std::string output;
        bool answered = false;  // the binary frame gets a good reply
        bool open = true;
    };
    std::vector<Row> table = {
        {">05,RDSTAT", k_ask_status_5, k_no_response, true},
        {">05,RDSTAT", k_ask_status_5, "\r\n"},
        {"noise, >  5 ,  RDSTAT  ", k_ask_status_5, "\r\n"},
        {">4.6,RDSTAT", k_ask_status_5, "\r\n"},
        {">5,A,B", "01 05 03 41 2C 42 01 70\n", "\r\n"},
        {">99.4,~", "01 63 01 7E 70 52\n", "\r\n"},
        {">05,RDSTAT" + std::string(40, ' '), k_ask_status_5, "\r\n"},  // 50 characters
        {"\x03\x03>05,RFON", k_text_rfon_5 + k_ask_status_5, "\r\n"},
        {">05,RFON\x03\x03", k_text_rfon_5 + k_ask_status_5, k_no_response, true},
        {">05,RDSTAT", "", "", false, false},
        {">05 RDSTAT", "", k_wrong, false, false},
        {"\x02\x02>05,RDSTAT", "", ""},
        {">05,RDSTAT" + std::string(41, ' '), "", k_wrong},
        {"\x02\x02RS422" + std::string(44, ' '), "", k_wrong},
    };
    // 261 would wrap to 5 in a byte; what ends behind the markers is half a line, or two.
    for (const char* line : {"1,>05 RDSTAT", "05,RDSTAT", ">261,RDSTAT", ">-95,RDSTAT", ">99.6,RDSTAT",
                             ">1e300,RDSTAT", ">,RDSTAT", ">5x,RDSTAT", ">5e0,RDSTAT", ">5..0,RDSTAT", ">5, ",
                             ">05,\x03\x03", ">05,\x03\x03>3,RFON", ">5,RDSTAT\x80", ">5,RDSTAT\x7F"})
        table.push_back({line, "", k_wrong});
    for (const Row& row : table) {
        SCOPED_TRACE(row.line);
        Line line(row.open);
        std::vector<Instant> sent;
        line.port.responder = [&](const std::string& frame) -> ScriptedPort::Answer {
            sent.push_back(line.clock.now());
            if (frame[0] == '\x02')
                return {{210ms, "RDSTAT\x03\r"}};  // no reply to the status behind it
            return {{0ms, row.answered ? hex_bytes("06 05 04 52 44 4F 4B B3 3F") : ""}};
        };
        line.commands.commCommandProc(row.line);
        EXPECT_TRUE(line.port.written.empty());  // the line may be somebody else's just now
        carry_out(line.bus, line.commands);
        EXPECT_FALSE(line.commands.busy());
        EXPECT_EQ(line.frames(), row.frames);
        EXPECT_EQ(line.output, row.output);
        EXPECT_TRUE(sent.size() < 2 || sent[1] - sent[0] == 200ms);
    }
}

// What somebody does between the exchanges of a line: an amplifier on another line is asked for its status,
// or the next caller gets an answer that is not his; and the line after it is held to be on the former one.
TEST(RemoteCommand, EndsWhenItsLineOrItsCallerIsGone) {
    for (const bool forgotten : {false, true}) {
        SCOPED_TRACE(forgotten);
        Line line;
        line.commands.commCommandProc("\x03\x03>05,RFON");
        ASSERT_TRUE(exchange_once(line.bus, line.commands));
        if (forgotten) {
            const auto status = line.commands.next();
            ASSERT_TRUE(status);
            EXPECT_EQ(line.commands.due(), std::nullopt);
            line.commands.forget();
            EXPECT_TRUE(line.commands.busy());  // the exchange is
            line.commands.ended(line.bus.carry_out(*status));
        } else {
            line.bus.open_bus_port("COM1:", 9600, 0, 8, 1);
            EXPECT_FALSE(exchange_once(line.bus, line.commands));
        }
        EXPECT_FALSE(line.commands.busy());
        EXPECT_EQ(line.frames(), k_text_rfon_5 + (forgotten ? k_ask_status_5 : ""));
        EXPECT_EQ(line.output, "");
        line.port.written.clear();
        line.commands.commCommandProc(">05,RDSTAT");
        carry_out(line.bus, line.commands);
        EXPECT_EQ(line.frames(), k_ask_status_5);
        EXPECT_EQ(line.output, "\r\n");
    }
}

// The port is opened with the file's own values; every failure is told to the remote station, although
// the port may be closed then, and leaves the line open that the amplifiers are on.
TEST(RemoteCommand, OpensThePortFromItsFile) {
    const LineSettings from_file{"COM1:", 19200, 1, 7, 2};
    const std::string failed = "Serial Initialization Failed\r\n";
    const std::string lost = "The line on COM2: with 1200,o,7,2 could not be opened again\r\n";
    enum Ports { there, absent, all_gone };
    const struct {
        std::string folder;
        Ports ports;
        std::string output;
        bool line_open = false;  // and so again after a failure
    } table[] = {
        {"/rs422/good", there, ""},
        {"/rs422/good", there, "", true},
        {"/rs422/good", absent, failed},
        {"/rs422/good", absent, failed, true},
        {"/rs422/good", all_gone, failed + lost, true},
        {"/rs422", there, "No default settings for serial port\r\n", true},
        {"/rs422/title", there, "Default settings for serial port corrupted\r\n"},
        {"/rs422/baud", there, failed, true},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.folder + " " + row.output);
        Line line(row.line_open, TEST_DATA + row.folder);
        const auto former = line.bus.settings();
        if (row.ports == absent)
            line.port.absent_device = "/dev/ttyS0";
        if (row.ports == all_gone)
            line.port.open_result = {PortError::not_found, "gone"};
        line.commands.commCommandProc("\x02\x02RS422");
        carry_out(line.bus, line.commands);
        EXPECT_EQ(line.output, row.output);
        EXPECT_EQ(line.bus.settings(), row.output.empty()      ? from_file
                                       : row.ports == all_gone ? std::nullopt
                                                               : former);
    }
}

}  // namespace
}  // namespace ampdesk
