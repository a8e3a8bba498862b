#include "tools/console.h"

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

bool Console::begin(std::int16_t unit_address, const std::string& text) {
    if (waiting_.size() >= k_most_waiting)
        return false;
    const bool in_hex = console_mode == k_hex_mode;
    const std::optional<std::string> payload = in_hex ? parse_hex_command(text) : text;
    if (!payload) {
        operator_.tell({.text = "Invalid command format, the command has to be in hex byte format"});
        return false;
    }
    if (payload->size() > k_longest_command) {
        operator_.tell({.text = "The command is too long", .detail = "A frame holds 255 bytes at most."});
        return false;
    }
    waiting_.push_back({.unit_address = unit_address, .payload = *payload, .in_hex = in_hex});
    if (on_sending)
        on_sending();
    return true;
}

std::optional<Instant> Console::due() const {
    return waiting_.empty() || asked_ ? std::nullopt : std::optional(Instant{});
}

std::optional<BusCommand> Console::next() {
    if (waiting_.empty())
        return std::nullopt;
    const Typed& typed = waiting_.front();
    if (bus_.bus_link_on()) {
        asked_ = true;
        return BusCommand{.address = typed.unit_address, .command = typed.payload};
    }
    tell({.unit_address = typed.unit_address, .output = why_not_sent()});
    return std::nullopt;
}

void Console::ended(const BusReply& reply) {
    asked_ = false;
    const Typed& typed = waiting_.front();
    if (reply.failure == BusFailure::not_sent)
        tell({.unit_address = typed.unit_address, .output = why_not_sent()});
    else
        tell(result_of(typed, reply));
}

void Console::tell(const Result& result) {
    waiting_.pop_front();
    if (on_result)
        on_result(result);
}

std::string Console::why_not_sent() const {
    if (!bus_.bus_link_on())
        return "The port is not open";
    return bus_.port().is_connected() ? "The line does not take the command" : "The line is lost";
}

// In text mode a reply is not shown, and the blanks that wait for one are shown when there is none: its
// readers know it so.
Console::Result Console::result_of(const Typed& typed, const BusReply& reply) const {
    Result result{
        .unit_address = typed.unit_address, .sent = true, .answered = reply.failure == BusFailure::none};
    if (!typed.in_hex) {
        result.output = left_aligned("Data Sent: " + readable(reply.frame), k_sent_width) +
                        "        Data Recv: " + std::string(result.answered ? 0 : k_reply_blanks, ' ');
        return result;
    }
    result.output = "Data Sent(Hex): " + hex_listing(reply.frame) +
                    "\r\nData Recv(Hex): " + hex_listing(reply.bytes) + "\r\n";
    const std::string text = result.answered ? reply.bytes : "There is no response";
    if (typed.payload[0] == k_text_answer)
        result.output +=
            "Asc Answer: " + (text.size() > k_text_begins ? text.substr(k_text_begins) : "") + " ";
    return result;
}

}  // namespace ampdesk
