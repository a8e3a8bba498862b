// One amplifier on the bus: what goes over the line to ask it or to set it, what comes back as values, and
// everybody who wants to know told of both. It does not wait: who drives the line carries its commands out.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "amplifier/readings.h"
#include "amplifier/request.h"
#include "buslink/bus_link.h"
#include "platform/clock.h"
#include "platform/signal.h"

namespace ampdesk {

// What came of a request.
struct Reading {
    enum class Outcome : std::uint8_t {
        good,
        unusable,  // an answer, but a NAK or none that could be read
        silence,
        bad_crc,
        not_sent,
    };

    std::int16_t unit_address = 0;
    Request request;
    Instant asked_at{};    // the first time, where this is the second try
    bool last_try = true;  // no second one follows if it failed
    Instant at{};          // when the answer was there, or its wait had ended
    CivilTime wall{};      // the same on the wall
    Outcome outcome = Outcome::silence;

    // Of a good one. A std::string is an event's or the band's text; nothing for an identity that does not
    // say who it is.
    std::variant<std::monostate, Status, Analog, AlarmState, Shutdown, Limits, Identity, std::string> value{};

    bool good() const { return outcome == Outcome::good; }

    // Null when the value is of another kind.
    template <class T>
    const T* get() const {
        return std::get_if<T>(&value);
    }
};

enum class Origin : std::uint8_t { key, remote_line, console, nvram, network };

// A setting that went out, once, and what became of it.
struct Setting {
    enum class Outcome : std::uint8_t { taken, refused, unanswered, not_sent };

    std::int16_t unit_address = 0;
    Origin origin = Origin::key;
    std::string command;  // its bytes, see commands.h
    Instant at{};
    CivilTime wall{};
    Outcome outcome = Outcome::unanswered;
    std::string refusal{};  // in words, of a refusal that carries a code
};

// A request that is under way.
struct Try {
    Request request;
    Instant asked_at{};  // the first time
    bool last = false;
};

class Amplifier {
  public:
    Amplifier(const Clock& clock, std::int16_t address, NegativeWords negative)
        : unit_address(address), clock_(clock), negative_(negative) {}

    // The command of a request, to be waited for as long as this amplifier is worth: a full second as long as
    // it answers, three times its longest answer, 0.3 s to 1.0 s, once it does not, and every twelfth time
    // the full second again.
    BusCommand command_of(const Request& request) const;

    // A setting is waited for a full second.
    BusCommand command_of(std::string_view setting) const;

    // Takes what came of a request, or of a setting, and publishes it. A cut exchange is none.
    Reading take(const Try& tried, const BusReply& reply);
    Setting take(std::string_view setting, Origin origin, const BusReply& reply);

    // How long a read of it is waited for when an order is to go out: three times its longest answer, 100 to
    // 300 ms.
    Duration patience_before_order() const;

    // Reads in a row that it left unanswered.
    int silences() const { return silences_; }

    // The line may be dead: none of it is to be waited for as long as if it were the only one that is silent.
    void suspect_line(bool suspected) { line_suspected_ = suspected; }

    Signal<Reading> readings;
    Signal<Setting> settings;

    const std::int16_t unit_address;

  private:
    Duration read_limit(bool guess) const;

    const Clock& clock_;
    NegativeWords negative_;
    int silences_ = 0;
    bool line_suspected_ = false;
    Duration longest_reply_{};  // of late
};

}  // namespace ampdesk
