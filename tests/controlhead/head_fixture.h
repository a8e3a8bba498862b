// A control head on a scripted bus. The test says in a table what the amplifier answers to which
// command; it is silent on others, but refuses an event that is not there. What was sent is kept.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "amplifier/commands.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "controlhead/keypad.h"
#include "controlhead/readings_in.h"
#include "tests/controlhead/pump.h"
#include "tests/support/manual_clock.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"
#include "tests/support/sent_frame.h"

namespace ampdesk {

using Texts = std::vector<std::string>;

// Bits of a status reply, characters 1 and 2.
inline constexpr int k_hv_on = 4;
inline constexpr int k_shutdown_bit = 16;
inline constexpr int k_power_save = 16;

// A block of sixteen words from a text such as "1=563 12=-5": item, from 1, and raw value.
inline std::string block(const std::string& words) {
    std::string bytes(32, '\0');
    std::istringstream text(words);
    int item = 0;
    int value = 0;
    for (char equals = 0; text >> item >> equals >> value;) {
        const auto at = 2 * (static_cast<std::size_t>(item) - 1);
        bytes[at] = static_cast<char>(value & 0xFF);
        bytes[at + 1] = static_cast<char>((value >> 8) & 0xFF);
    }
    return bytes;
}

class Bench {
  public:
    explicit Bench(BusOptions options = {}) : bus(port, clock, std::move(options)) {
        port.responder = [this](const std::string& frame) { return answer(frame); };
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        set_status(0);
        replies[std::string(k_analog_request)] = block("");
        replies[std::string(k_limits_request)] = block("");
        set_alarm("0,Standby");
    }

    // Characters 1, 2, 3, 5 and 6 of the status reply.
    void set_status(int status, int settings = 0, int flags = 0, int switch_state = 0, int switch_count = 0) {
        std::string& reply = replies[std::string(k_status_request)];
        reply.clear();
        for (const int c : {status, settings, flags, 0, switch_state, switch_count})
            reply += static_cast<char>(c);
    }
    void set_alarm(const std::string& reply) { replies[std::string(k_alarm_request)] = reply; }
    void set_shutdown(const std::string& reply) {
        set_status(k_shutdown_bit);
        replies[std::string(k_shutdown_request)] = reply;
    }
    void set_analog(const std::string& words) { replies[std::string(k_analog_request)] = block(words); }

    std::string& reply_to(std::string_view command) { return replies[std::string(command)]; }
    void go_mute(std::string_view command) { replies.erase(std::string(command)); }

    // What was sent since the last call.
    Texts take_sent() { return std::exchange(sent, {}); }
    // The settings among it: class 16 and "SBAND".
    Texts take_settings() {
        Texts all = take_sent();
        std::erase_if(all, [](const std::string& c) { return !SentFrame{.command = c}.setting(); });
        return all;
    }
    std::size_t count_sent(std::string_view command) const {
        return static_cast<std::size_t>(std::count(sent.begin(), sent.end(), command));
    }

    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus;
    HeadServices services{bus, clock, person, {}};

    bool silent = false;
    std::map<std::string, std::string> replies;  // command and payload; no entry, no answer
    int refusal = 0;                             // code that settings are refused with; 0 takes them
    Texts sent;                                  // the commands, without their frames

  private:
    ScriptedPort::Answer answer(const std::string& frame) {
        const SentFrame order = sent_frame(frame);
        const std::string& command = order.command;
        sent.push_back(command);
        const auto known = replies.find(command);
        const bool there = known != replies.end();
        const bool event = command.starts_with("\xA0\x1A");
        if (silent || (!there && !event && !order.setting()))
            return {};
        const int code = there ? 0 : event ? 4 : refusal;
        const std::string data = there ? known->second : code != 0 ? std::string(1, char(code)) : "";
        const std::string reply =
            order.text ? "\x02" + data + "\x03" + "00\r"
                       : build_reply_frame(Crc16{}, code == 0 ? k_ack : k_nak, 1, command + data);
        return {{std::chrono::milliseconds(20), reply}};
    }
};

// A head on status screen 1, and its inside.
class HeadTest : public Bench, public ::testing::Test {
  protected:
    HeadTest() { station.start(); }

    // The four lines, joined by bars.
    std::string lines() const {
        const Panel& panel = head.panel;
        return panel.line(1) + "|" + panel.line(2) + "|" + panel.line(3) + "|" + panel.line(4);
    }
    std::string lamps() const {
        std::string colours;
        for (int lamp = 1; lamp <= 8; ++lamp) colours += ".YRG"[static_cast<int>(head.panel.lamp(lamp))];
        return colours;
    }
    // Faster than anything goes over the line.
    void press_at_once(std::initializer_list<std::int16_t> keys) {
        for (const std::int16_t key : keys) cmdKey_Click(head, key);
    }
    void press(std::initializer_list<std::int16_t> keys) {
        for (const std::int16_t key : keys) {
            cmdKey_Click(head, key);
            station.serve();
        }
    }
    void press_hard(std::int16_t key) {
        cmdHardkey_Click(head, key);
        station.serve();
    }
    void move_bar(int value) {
        VScroll1_Change(head, value);
        station.serve();
    }
    void visit(int times = 1) { station.visit(times); }
    void open(std::int16_t screen, std::int16_t key) {
        head.menu_ptr = screen;
        press({key});
    }
    // A box that no test asked for is a failure.
    void TearDown() override { EXPECT_EQ(person.take_texts(), Texts{}); }

    Pump station{services, {.slot = 1, .unit_address = 7, .number = "1234", .model = ""}};
    Head& head = station.inside();
};

}  // namespace ampdesk
