// A control head on a bus, and what stands for its station. The amplifier is a simulated one; what a test
// says in `replies` is answered in its place. What was sent is kept.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "amplifier/commands.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "controlhead/control_head.h"
#include "controlhead/screens.h"
#include "demo/sim_bus.h"
#include "tests/support/bus_rig.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/sent_frame.h"

namespace ampdesk {

using Texts = std::vector<std::string>;
using std::chrono::milliseconds;

// Carries out over the line, at once, what the head wants.
class Pump {
  public:
    using Kind = Request::Kind;

    Pump(HeadServices& services, const HeadIdentity& identity)
        : head(services, identity),
          amplifier(services.clock, identity.unit_address, services.options.negative_words),
          services_(services) {}

    void start() {
        head.machine_init(false);
        hear();
    }
    // Until nothing is wanted any more; what is read all the time is read once every half second.
    void serve() {
        if (services_.clock.now() - round_ >= k_period) {
            round_ = services_.clock.now();
            read_ = {};
        }
        int turns = 0;
        while (head.life() != ControlHead::Life::failed && serve_one())
            ASSERT_LT(++turns, 1000) << "the head never has enough";
        tell();
    }
    // What is read all the time is read now.
    void hear() {
        read({Kind::status});
        round_ = {};
        serve();
    }
    void visit(int times = 1) {
        for (; times > 0; --times) {
            services_.clock.sleep_until(services_.clock.now() + k_period);
            hear();
            head.tick();
            tell();
        }
    }
    // For a test that meddles with the inside.
    Head& inside() { return const_cast<Head&>(head.state()); }

    ControlHead head;
    Amplifier amplifier;
    bool tells = true;  // what there is to tell; else it waits

  private:
    static constexpr milliseconds k_period{500};

    bool serve_one() {
        if (!head.orders().empty()) {
            const Order order = head.orders().front();
            head.orders().pop_front();
            const BusReply reply = services_.bus.carry_out(amplifier.command_of(order.command));
            head.take(order, amplifier.take(order.command, Origin::key, reply));
            return true;
        }
        const bool failing = head.silent() || amplifier.silences() > 0;
        for (const Kind kind : {Kind::analog, Kind::alarm_state, Kind::limits}) {
            const bool needed = kind != Kind::limits || (head.needs() & k_needs_limits) != 0;
            if (!failing && needed && !std::exchange(read_.at(static_cast<std::size_t>(kind)), true))
                return read({kind});
        }
        if (head.requests().empty() || head.silent())
            return false;
        return failing ? ask({{Kind::status}, services_.clock.now()}) : read(head.requests().front());
    }
    // Twice at most, a guess and a look for a silent amplifier once. One that does not answer is asked for
    // its status before anything else.
    bool read(const Request request) {
        const Instant now = services_.clock.now();
        const bool once = head.silent() || request.guess;
        if (ask({request, now, once}) || once)
            return true;
        if (amplifier.silences() > 0 && request.kind != Kind::status)
            ask({{Kind::status}, services_.clock.now()});
        ask({request, now, true});
        return true;
    }
    bool ask(const Try& attempt) {
        const BusReply reply = services_.bus.carry_out(amplifier.command_of(attempt.request));
        const Reading reading = amplifier.take(attempt, reply);
        head.take(reading);
        return reading.good();
    }

    void tell() {
        while (const auto message = tells ? head.take_message() : std::nullopt)
            services_.person.tell(*message);
    }

    HeadServices& services_;
    Instant round_{};  // since when everything is read once more
    std::array<bool, 8> read_{};
};

// The four lines, joined by bars.
inline std::string lines_of(const Panel& panel) {
    return panel.line(1) + "|" + panel.line(2) + "|" + panel.line(3) + "|" + panel.line(4);
}

class Bench : public testing::Test, protected BusRig {
  protected:
    Bench() {
        port.responder = [this](const std::string& frame) { return answer(frame); };
        services.options.folder = folder.path();
    }

    // The settings that were sent since the last call: words as they are, bytes in hexadecimal.
    Texts take_settings() {
        Texts settings;
        for (const SentFrame& order : std::exchange(sent, {}))
            if (order.setting())
                settings.push_back(order.command[0] == 16 ? to_hex(order.command) : order.command);
        return settings;
    }
    std::ptrdiff_t count_sent(std::string_view command) const {
        return std::count_if(sent.begin(), sent.end(), [&](const auto& o) { return o.command == command; });
    }

    const ScratchFolder folder;
    demo::SimBus sim{clock};
    HeadServices services{bus, clock, person, {}};
    // What is answered to a command, nothing for silence; on others the simulated amplifier decides.
    std::map<std::string, std::optional<std::string>, std::less<>> replies;
    std::vector<SentFrame> sent;

  private:
    ScriptedPort::Answer answer(const std::string& frame) {
        const SentFrame order = sent_frame(frame);
        sent.push_back(order);
        std::string reply;
        if (sim.find(order.address)->line.silent)
            return {};
        if (const auto said = replies.find(order.command); said == replies.end()) {
            sim.receive(frame);
            reply = sim.take_due();
        } else if (said->second) {
            const std::string& data = *said->second;
            reply = order.text ? "\x02" + data + "\x03" + "00\r"
                               : build_reply_frame(Crc16{}, k_ack, 1, order.command + data);
        }
        return reply.empty() ? ScriptedPort::Answer{} : ScriptedPort::Answer{{milliseconds(20), reply}};
    }
};

// A block of sixteen words from a text such as "1=563 12=-5": item, from 1, and raw value.
inline std::string block(const std::string& words) {
    std::string bytes(32, '\0');
    std::istringstream text(words);
    std::size_t item = 0;
    int value = 0;
    for (char equals = 0; text >> item >> equals >> value;) {
        bytes[2 * item - 2] = static_cast<char>(value & 0xFF);
        bytes[2 * item - 1] = static_cast<char>((value >> 8) & 0xFF);
    }
    return bytes;
}

// A head on status screen 1, and its inside. Everything that it shows at first is 0 and off.
class HeadTest : public Bench {
  protected:
    HeadTest() {
        set_status(0);
        set_analog("");
        set(k_limits_request, block(""));
        set_alarm("0,Standby");
        station.start();
    }

    // Characters 1, 2, 3, 5 and 6 of the status reply. Of the first 4 is HV on, 16 a shutdown; of the second
    // 16 is power save, of the third 2 the switch.
    void set_status(int status, int settings = 0, int flags = 0, int switch_state = 0, int switch_count = 0) {
        const auto c = [](int value) { return static_cast<char>(value); };
        set(k_status_request,
            std::string{c(status), c(settings), c(flags), '\0', c(switch_state), c(switch_count)});
    }
    void set_analog(const std::string& words) { set(k_analog_request, block(words)); }
    void set_alarm(const std::string& reply) { set(k_alarm_request, reply); }
    void set_shutdown(const std::string& reply) {
        set_status(16);
        set(k_shutdown_request, reply);
    }
    // No reply is silence.
    void set(std::string_view command, const std::optional<std::string>& reply) {
        replies[std::string(command)] = reply;
    }

    std::string lines() const { return lines_of(head.panel); }
    std::string lamps() const {
        std::string colours;
        for (int lamp = 1; lamp <= 8; ++lamp) colours += ".YRG"[static_cast<int>(head.panel.lamp(lamp))];
        return colours;
    }
    // Faster than anything goes over the line.
    void press_at_once(const std::vector<std::int16_t>& keys) {
        for (const std::int16_t key : keys) control.press_key(key);
    }
    void press(const std::vector<std::int16_t>& keys) {
        for (const std::int16_t key : keys) {
            control.press_key(key);
            station.serve();
        }
    }
    void press_hard(std::int16_t key) {
        control.press_hard_key(key);
        station.serve();
    }
    void move_bar(int value) {
        control.move_scroll_bar(value);
        station.serve();
    }
    void visit(int times = 1) { station.visit(times); }
    void open(std::int16_t screen, std::int16_t key) {
        head.menu_ptr = screen;
        press({key});
    }

    demo::SimAmplifier& amplifier = sim.add({.address = 7});
    Pump station{services, {.slot = 1, .unit_address = 7, .number = "1234", .model = ""}};
    ControlHead& control = station.head;
    Head& head = station.inside();
};

}  // namespace ampdesk
