// A control head and what stands for its station: carries out over the line, at once, what the head wants.
#pragma once

#include <gtest/gtest.h>

#include <array>

#include "controlhead/control_head.h"
#include "controlhead/screens.h"

namespace ampdesk {

class Pump {
  public:
    using Kind = Request::Kind;

    Pump(HeadServices& services, const HeadIdentity& identity)
        : head(services, identity),
          amplifier(services.clock, identity.unit_address, services.options.negative_words),
          services_(services) {}

    void start(bool restore = false) {
        head.machine_init(restore);
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
    static constexpr std::chrono::milliseconds k_period{500};

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
        return failing ? ask({{Kind::status}, services_.clock.now()})
                       : read(Request(head.requests().front()));
    }
    // Twice at most, a guess and a look for a silent amplifier once. One that does not answer is asked for
    // its status before anything else.
    bool read(const Request& request) {
        Try attempt{request, services_.clock.now(), head.silent() || request.guess};
        if (ask(attempt) || attempt.last)
            return true;
        if (amplifier.silences() > 0 && request.kind != Kind::status)
            ask({{Kind::status}, services_.clock.now()});
        attempt.last = true;
        ask(attempt);
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

}  // namespace ampdesk
