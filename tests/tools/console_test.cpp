// The command console: typed text to frames, frames to text, and the recall of commands.
#include "tools/console.h"

#include <gtest/gtest.h>

#include "tests/support/bus_rig.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/sent_frame.h"
#include "tools/command_history.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

class ConsoleTest : public testing::Test, protected BusRig {
  protected:
    ConsoleTest() {
        console.on_result = [this](const Console::Result& r) { results.push_back(r); };
    }

    // What came of the command; nothing when it was refused.
    std::optional<Console::Result> send(const std::string& text) {
        results.clear();
        if (console.begin(5, text))
            carry_out(bus, console);
        EXPECT_LE(results.size(), 1U);
        return results.empty() ? std::nullopt : std::optional(results.front());
    }

    Console console{bus, person};
    std::vector<Console::Result> results;
};

// Fault: another command goes out than the one that was typed.
TEST_F(ConsoleTest, TypedBytes) {
    const std::pair<const char*, const char*> cases[] = {
        {"A0 01", "A0 01"}, {"a0 1", "A0 01"}, {"05 ", "05 00"},       {"1  2", "01 00 02"},
        {" 1", "00 01"},    {"", "00"},        {"G1 1G G", "00 01 00"}};
    for (const auto& [typed, payload] : cases) {
        EXPECT_TRUE(send(typed)) << typed;
        EXPECT_EQ(to_hex(sent_frame(port.written.back()).command), payload);
    }
    port.written.clear();
    for (const char* typed : {"123", "12 345", "123 4"}) EXPECT_FALSE(send(typed)) << typed;
    EXPECT_TRUE(port.written.empty());
    EXPECT_EQ(person.take_texts(),
              Texts(3, "Invalid command format, the command has to be in hex byte format"));
}

// Fault: the listing leaves bytes out, pads them, or shows an older frame.
TEST_F(ConsoleTest, HexMode) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"A0 01", "06 05 0A A0 01 00 30 2C 4F 4B 0A B0 41 CF 77",
         "Data Sent(Hex): 1 5 2 A0 1 25 C \r\n"
         "Data Recv(Hex): 6 5 A A0 1 0 30 2C 4F 4B A B0 41 CF 77 \r\n"
         "Asc Answer: 0,OK\n\xB0"
         "A\xCF"
         "w "},
        {"11", "06 05 01 11 D1 15", "Data Sent(Hex): 1 5 1 11 D0 61 \r\nData Recv(Hex): 6 5 1 11 D1 15 \r\n"},
        {"11", "", "Data Sent(Hex): 1 5 1 11 D0 61 \r\nData Recv(Hex): \r\n"},
        {"A0 01", "", "Data Sent(Hex): 1 5 2 A0 1 25 C \r\nData Recv(Hex): \r\nAsc Answer: is no response "},
    };
    for (const auto& [typed, reply, output] : cases) {
        port.answer(hex_bytes(reply));
        const auto result = send(typed);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->answered, *reply != 0);
        EXPECT_EQ(result->output, output);
    }
}

// Fault: what did not go out is shown as sent, or an amplifier that was never asked as silent.
TEST_F(ConsoleTest, WhatIsNotSent) {
    std::string typed = "1";
    for (int i = 1; i < 256; ++i) typed += " 1";
    for (const std::int16_t mode : {Console::k_hex_mode, std::int16_t{0}}) {
        console.console_mode = mode;
        const std::string longest(255, 'x');
        EXPECT_TRUE(send(mode == 0 ? longest : typed.substr(2))->sent);
        port.written.clear();
        EXPECT_FALSE(send(mode == 0 ? longest + "x" : typed));
        EXPECT_EQ(person.take_texts(), Texts{"The command is too long"});
        port.unplugged = true;
        const auto lost = send("11");
        EXPECT_EQ(lost->output, "The line is lost");
        EXPECT_FALSE(lost->sent || lost->answered);
        port.unplugged = false;
        bus.close_bus_port();
        EXPECT_EQ(send("11")->output, "The port is not open");
        EXPECT_TRUE(port.written.empty());
        bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    }
}

TEST_F(ConsoleTest, TextMode) {
    console.console_mode = 0;
    port.answer(hex_bytes("06 05 03 47 4F 01 89 C7"));
    EXPECT_EQ(send("GO")->output, "Data Sent: [01h][05h][02h]GO[EEh][C8h]        Data Recv: ");
    EXPECT_EQ(send("GO")->output,
              "Data Sent: [01h][05h][02h]GO[EEh][C8h]        Data Recv: " + std::string(100, ' '));
    EXPECT_EQ(readable("\x1F ~\x7F\x80"), "[1Fh] ~[7Fh][80h]");
}

// Fault: a command that is typed while another one waits for its reply is lost, goes to another amplifier or
// gets the other's reply; what waits has no end.
TEST_F(ConsoleTest, TakesTheNextWhileOneIsUnderWay) {
    ASSERT_TRUE(console.begin(5, "11"));
    const auto first = console.next();
    ASSERT_TRUE(first);
    EXPECT_EQ(console.due(), std::nullopt);
    for (std::size_t i = 1; i < Console::k_most_waiting; ++i) EXPECT_TRUE(console.begin(6, "12"));
    EXPECT_FALSE(console.begin(6, "12"));
    port.answer(hex_bytes("06 05 01 11 D1 15"));
    console.console_mode = 0;
    console.ended(bus.carry_out(*first));
    EXPECT_TRUE(results.at(0).answered && results.at(0).output.starts_with("Data Sent(Hex)"));
    bus.close_bus_port();
    carry_out(bus, console);
    ASSERT_EQ(results.size(), Console::k_most_waiting);
    EXPECT_EQ(results.back().unit_address, 6);
    EXPECT_EQ(results.back().output, "The port is not open");
}

// Fault: a command is lost or comes twice, the keys run past an end, or what was being typed is gone.
TEST(CommandHistory, RecallsTheLastTwentyCommands) {
    CommandHistory history;
    EXPECT_EQ(history.older("draft"), "draft");
    EXPECT_EQ(history.newer("draft"), "draft");
    for (int i = 1; i <= 22; ++i) history.add(std::to_string(i));
    history.add("22");
    std::string shown = "22";  // it stays in the entry when it has been sent
    for (int i = 21; i >= 3; --i) {
        shown = history.older(shown);
        EXPECT_EQ(shown, std::to_string(i));
    }
    EXPECT_EQ(history.older(shown), "3");
    EXPECT_EQ(history.older("x"), "22");  // typed over: from the newest one on again
    EXPECT_EQ(history.older("22"), "21");
    EXPECT_EQ(history.newer("21"), "22");
    EXPECT_EQ(history.newer("22"), "x");
    EXPECT_EQ(history.newer("x"), "x");
}

}  // namespace
}  // namespace ampdesk
