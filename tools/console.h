// The interactive console: a typed command becomes a payload, the frame that went out and what came
// back become text. Latin-1 throughout.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "buslink/bus_guest.h"
#include "platform/operator.h"

namespace ampdesk {

// The payload that fields of one or two hexadecimal digits, each ended by one blank or the end of the
// text, stand for. An empty field is a byte 0, and so is one that begins with no digit; a field of
// more than two characters gives nothing.
std::optional<std::string> parse_hex_command(std::string_view text);

// Printable characters as they are, every other one as "[" + two upper-case hexadecimal digits + "h]".
std::string readable(std::string_view bytes);

class Console : public BusGuest {
  public:
    static constexpr std::int16_t k_hex_mode = 7;
    static constexpr std::size_t k_most_waiting = 20;  // commands that have not gone out

    Console(BusLink& bus, Operator& person) : bus_(bus), operator_(person) {}

    struct Result {
        std::int16_t unit_address = 0;  // whom the command was for
        bool sent = false;
        bool answered = false;
        std::string output{};  // what LblOutput shows
    };

    // Takes a command that is to be sent behind those that wait. False, after a message, for a text that is
    // no command or longer than a frame holds; false without one while too many wait.
    bool begin(std::int16_t unit_address, const std::string& text);

    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    // The command is sound and will be sent.
    std::function<void()> on_sending;

    // What came of a command; once for each that was taken.
    std::function<void(const Result&)> on_result;

    std::int16_t console_mode = k_hex_mode;  // any other value is text mode

  private:
    struct Typed {
        std::int16_t unit_address = 0;
        std::string payload;
        bool in_hex = true;
    };
    Result result_of(const Typed& typed, const BusReply& reply) const;
    std::string why_not_sent() const;
    void tell(const Result& result);

    BusLink& bus_;
    Operator& operator_;
    std::deque<Typed> waiting_;  // the first one is under way when asked_ is true
    bool asked_ = false;
};

}  // namespace ampdesk
