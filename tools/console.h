// The interactive console: a typed command becomes a payload, the frame that went out and what came
// back become text. Latin-1 throughout.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "buslink/bus_link.h"
#include "platform/operator.h"

namespace ampdesk {

// The payload that fields of one or two hexadecimal digits, each ended by one blank or the end of the
// text, stand for. An empty field is a byte 0, and so is one that begins with no digit; a field of
// more than two characters gives nothing.
std::optional<std::string> parse_hex_command(std::string_view text);

// Printable characters as they are, every other one as "[" + two upper-case hexadecimal digits + "h]".
std::string readable(std::string_view bytes);

// The last twenty commands. A command like the one before it is kept once.
class CommandHistory {
  public:
    static constexpr std::size_t k_length = 20;

    void add(const std::string& command);

    // What the entry shows after the up or down key, given what it shows now. Up leads to older
    // commands and stays at the oldest; down leads back, in the end to the text that was there first.
    std::string older(const std::string& shown);
    std::string newer(const std::string& shown);

  private:
    bool recalled(const std::string& shown) const;

    std::vector<std::string> commands_;
    std::size_t at_ = 0;  // the command that is shown; one past the last for none
    std::string draft_;   // what was typed before the first up key
};

class Console {
  public:
    static constexpr std::int16_t k_hex_mode = 7;

    Console(BusLink& bus, Operator& person) : bus_(bus), operator_(person) {}

    struct Result {
        bool sent = false;
        bool answered = false;
        std::string output{};  // what LblOutput shows
    };

    // Sends the command and waits for the reply. Nothing, after a message, for a text that is no
    // command or longer than a frame holds; nothing is sent then. Both are kept in the history.
    std::optional<Result> send(std::int16_t unit_address, const std::string& text);

    // The command is sound and goes out now.
    std::function<void()> on_sending;

    CommandHistory history;
    std::int16_t console_mode = k_hex_mode;  // any other value is text mode

  private:
    Result not_sent() const;
    Result exchange_hex(std::int16_t unit_address, const std::string& payload);
    Result exchange_text(std::int16_t unit_address, const std::string& payload);

    BusLink& bus_;
    Operator& operator_;
};

}  // namespace ampdesk
