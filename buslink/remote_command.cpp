#include "buslink/remote_command.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "buslink/settings_files.h"
#include "platform/numbers.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_text_rest{200};  // an amplifier takes that long to carry it out
constexpr std::string_view k_no_response =
    "No response from amplifier, check 422/485 connection to the amplifier";
constexpr std::string_view k_wrong_command = "No message from amplifier, wrong command";
constexpr std::size_t k_longest_line = 50;  // a longer one is noise

struct Order {
    std::int16_t address = 0;
    std::string_view command;
};

// 0..99; nothing for another number, which a frame would wrap to some other amplifier's, and for a text
// that is no plain number: a bad line's noise would all go to amplifier 0.
std::optional<std::int16_t> parse_address(std::string_view text) {
    const bool plain = text.find_first_not_of(" .0123456789") == std::string_view::npos &&
                       text.find_first_of("0123456789") != std::string_view::npos &&
                       text.find('.') == text.rfind('.');
    const double number = plain ? lenient_number(text) : 100;
    if (number >= 100)
        return std::nullopt;
    const std::int16_t address = round_to_int16(number);
    return address <= 99 ? std::optional(address) : std::nullopt;
}

// Nothing for a line that orders nothing. What comes over a bad line must not reach an amplifier. The marker
// of a text command stands in front of the address or ends the line; in the midst of a command it is half of
// another line.
std::optional<Order> parse_order(std::string_view line, std::string_view marker) {
    const std::size_t start = line.find('>');
    const std::size_t comma = start == std::string_view::npos ? start : line.find(',', start);
    if (comma == std::string_view::npos || line.size() > k_longest_line)
        return std::nullopt;
    const auto address = parse_address(line.substr(start + 1, comma - start - 1));
    std::string_view command = trimmed(line.substr(comma + 1));
    if (command.ends_with(marker))
        command = trimmed(command.substr(0, command.size() - marker.size()));
    const bool printable =
        std::all_of(command.begin(), command.end(), [](char c) { return c >= ' ' && c <= '~'; });
    if (!address || command.empty() || !printable)
        return std::nullopt;
    return Order{*address, command};
}

bool contains(std::string_view line, std::string_view part) {
    return line.find(part) != std::string_view::npos;
}

}  // namespace

RemoteCommands::RemoteCommands(BusLink& bus, std::function<void(std::string_view)> output, std::string folder)
    : bus_(bus), output_(std::move(output)), folder_(std::move(folder)) {}

void RemoteCommands::commCommandProc(std::string_view line) {
    if (orders_nothing(line))
        return answer_wrong_command();
    if (contains(line, port_command_marker)) {
        stage_ = contains(line, "RS422") ? Stage::port : Stage::idle;
        return;
    }
    const Order order = *parse_order(line, status_command_marker);
    command_ = {.address = order.address, .command = std::string(order.command)};
    stage_ = contains(line, status_command_marker) ? Stage::text : Stage::binary;
    line_ = std::nullopt;
}

std::optional<Instant> RemoteCommands::due() const {
    return stage_ == Stage::idle || asked_ ? std::nullopt : std::optional(Instant{});
}

std::optional<BusCommand> RemoteCommands::next() {
    if (stage_ == Stage::port) {
        stage_ = Stage::idle;
        try {
            open_port();
        } catch (const std::exception& error) {
            answer(error.what());
        }
    }
    // Behind a text frame another line may have been opened: another amplifier has the address there.
    if (!bus_.bus_link_on() || (line_ && line_ != bus_.settings()))
        stage_ = Stage::idle;
    if (stage_ == Stage::idle)
        return std::nullopt;
    asked_ = true;
    if (stage_ == Stage::binary)
        return command_;
    line_ = bus_.settings();
    BusCommand text = command_;
    text.form = CommandForm::text_only;
    text.rest = k_text_rest;
    return text;
}

void RemoteCommands::ended(const BusReply& reply) {
    asked_ = false;
    if (stage_ == Stage::text) {
        command_.command = "RDSTAT";
        stage_ = Stage::binary;
        return;
    }
    // The sense is on purpose, and what remote stations are used to: a good reply is answered by
    // the words of a failure, a failed exchange by an empty line.
    if (std::exchange(stage_, Stage::idle) == Stage::binary && bus_.bus_link_on())
        answer(reply.failure == BusFailure::none ? k_no_response : std::string_view());
}

bool RemoteCommands::orders_nothing(std::string_view line) const {
    if (contains(line, port_command_marker))
        return contains(line, "RS422") && line.size() > k_longest_line;
    return !parse_order(line, status_command_marker);
}

void RemoteCommands::answer_wrong_command() {
    answer(k_wrong_command);
}

void RemoteCommands::open_port() {
    const std::string path = folder_ + "/rs422.dat";
    if (!file_exists(path))
        return answer("No default settings for serial port");
    const auto file = read_rs422(path);
    if (!file)
        return answer("Default settings for serial port corrupted");
    const auto settings = line_settings(*file);
    const auto before = bus_.settings();
    if (settings && bus_.open_bus_port(*settings) == 0)
        return;
    const std::string lost = bus_.give_back(before);
    answer("Serial Initialization Failed");
    if (!lost.empty())
        answer(lost);
}

void RemoteCommands::answer(std::string_view text) {
    if (output_)
        output_(std::string(text) + "\r\n");
}

}  // namespace ampdesk
