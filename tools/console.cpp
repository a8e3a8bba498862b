#include "tools/console.h"

#include <utility>

#include "buslink/wire/binary_frame.h"
#include "platform/numbers.h"
#include "tools/hex_text.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_longest_field = 2;
constexpr char k_text_answer = '\xA0';    // a command of this class is answered by text …
constexpr std::size_t k_text_begins = 6;  // … from this offset of the reply frame on
constexpr std::size_t k_sent_width = 20;
constexpr std::size_t k_reply_blanks = 100;  // what stands in the reply's place while there is none

}  // namespace

std::optional<std::string> parse_hex_command(std::string_view text) {
    std::string payload;
    for (bool more = true; more;) {
        const std::size_t blank = text.find(' ');
        more = blank != std::string_view::npos;
        const std::string_view field = text.substr(0, blank);
        if (field.size() > k_longest_field)
            return std::nullopt;
        payload += static_cast<char>(leading_hex(field));
        text.remove_prefix(more ? blank + 1 : text.size());
    }
    return payload;
}

std::string readable(std::string_view bytes) {
    std::string text;
    for (const char c : bytes)
        text += c >= 32 && c <= 126 ? std::string(1, c) : "[" + hex_pairs({&c, 1}) + "h]";
    return text;
}

void CommandHistory::add(const std::string& command) {
    if (commands_.empty() || commands_.back() != command)
        commands_.push_back(command);
    if (commands_.size() > k_length)
        commands_.erase(commands_.begin());
    at_ = commands_.size() - 1;  // the entry still shows it
    draft_.clear();
}

bool CommandHistory::recalled(const std::string& shown) const {
    return at_ < commands_.size() && commands_[at_] == shown;
}

std::string CommandHistory::older(const std::string& shown) {
    if (!recalled(shown)) {
        draft_ = shown;
        at_ = commands_.size();
    }
    if (at_ > 0)
        --at_;
    return commands_.empty() ? shown : commands_[at_];
}

std::string CommandHistory::newer(const std::string& shown) {
    if (!recalled(shown))
        return shown;
    ++at_;
    return at_ < commands_.size() ? commands_[at_] : draft_;
}

std::optional<Console::Result> Console::send(std::int16_t unit_address, const std::string& text) {
    if (!text.empty())
        history.add(text);
    const bool in_hex = console_mode == k_hex_mode;
    const std::optional<std::string> payload = in_hex ? parse_hex_command(text) : text;
    if (!payload) {
        operator_.notify("Invalid command format, the command has to be in hex byte format");
        return std::nullopt;
    }
    if (payload->size() > k_longest_command) {
        operator_.notify("The command is too long", "A frame holds 255 bytes at most.");
        return std::nullopt;
    }
    if (on_sending)
        on_sending();
    if (!bus_.bus_link_on())
        return not_sent();
    return in_hex ? exchange_hex(unit_address, *payload) : exchange_text(unit_address, *payload);
}

Console::Result Console::not_sent() const {
    if (!bus_.bus_link_on())
        return {.output = "The port is not open"};
    return {.output = bus_.port().is_connected() ? "The line does not take the command" : "The line is lost"};
}

Console::Result Console::exchange_hex(std::int16_t unit_address, const std::string& payload) {
    std::string reply;
    const auto count = static_cast<std::size_t>(bus_.bus_command(unit_address, payload, reply));
    const std::string sent = std::exchange(bus_.last_bus_frame, {});
    if (bus_.failure() == BusFailure::not_sent)
        return not_sent();
    if (count == 0)
        reply = "There is no response";
    std::string text_line;
    if (payload[0] == k_text_answer)
        text_line = "Asc Answer: " + (reply.size() > k_text_begins ? reply.substr(k_text_begins) : "") + " ";
    return {.sent = true,
            .answered = count > 0,
            .output = "Data Sent(Hex): " + hex_listing(sent) + "\r\nData Recv(Hex): " +
                      hex_listing(std::string_view(reply).substr(0, count)) + "\r\n" + text_line};
}

// A reply is not shown in this mode, and the blanks that wait for one are shown when there is none:
// its readers know it so.
Console::Result Console::exchange_text(std::int16_t unit_address, const std::string& payload) {
    std::string reply;
    const bool answered = bus_.bus_command(unit_address, payload, reply) != 0;
    if (bus_.failure() == BusFailure::not_sent)
        return not_sent();
    reply.assign(answered ? 0 : k_reply_blanks, ' ');
    return {.sent = true,
            .answered = answered,
            .output = left_aligned("Data Sent: " + readable(bus_.last_bus_frame), k_sent_width) +
                      "        Data Recv: " + readable(reply)};
}

}  // namespace ampdesk
