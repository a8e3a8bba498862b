#include "buslink/bus_link.h"

#include <utility>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/text_frame.h"

namespace ampdesk {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds k_write_limit{1000};
constexpr milliseconds k_quiet{50};  // a line this long without a byte is at rest
constexpr milliseconds k_settle_limit{300};
constexpr std::string_view k_probe_command{"\x11", 1};

Duration seconds(float value) {
    return std::chrono::duration_cast<Duration>(std::chrono::duration<float>(value));
}

}  // namespace

BusLink::BusLink(SerialPort& port, Clock& clock, Operator& person, BusOptions options)
    : port_(port),
      clock_(clock),
      operator_(person),
      options_(std::move(options)),
      crc_(options_.crc),
      addresses_(options_.reply_address) {}

// After a failed exchange a late answer may still be under way: it is waited for and thrown away,
// so that it is never taken for the next one.
void BusLink::settle() {
    const Instant limit = clock_.now() + k_settle_limit;
    while (unsettled_ && clock_.now() < limit) {
        const Instant quiet = std::min(limit, clock_.now() + k_quiet);
        if (port_.wait_readable(quiet) != WaitResult::data)
            break;
        discard_input();
    }
    unsettled_ = false;
    discard_input();
}

// A traffic view shows what nobody else wants, too: a late answer tells why there was none in time.
void BusLink::discard_input() {
    if (on_traffic)
        receive();
    else
        port_.discard_input();
}

bool BusLink::send(int address, std::string_view frame) {
    spoken_to_ = address;
    if (port_.write(frame, clock_.now() + k_write_limit) != PortError::none)
        return false;
    if (on_traffic)
        on_traffic({.sent = true, .address = address, .bytes = frame});
    return true;
}

std::string BusLink::receive() {
    std::string bytes = port_.read_waiting();
    if (on_traffic && !bytes.empty())
        on_traffic({.sent = false, .address = spoken_to_, .bytes = bytes});
    return bytes;
}

std::int16_t BusLink::bus_command(std::int16_t address, std::string_view command, std::string& reply,
                                  Duration limit) {
    reply.clear();
    last_bus_frame.clear();
    failure_ = BusFailure::not_sent;
    if (command.size() > k_longest_command)
        return 0;
    const auto unit = static_cast<std::uint8_t>(address);
    last_bus_frame = build_command_frame(crc_, unit, command);
    settle();
    ReplyParser parser(crc_, last_bus_frame, addresses_.looked_at(unit));
    unsettled_ = true;
    ++unanswered_;
    if (!send(address, last_bus_frame))
        return 0;
    const Instant start = clock_.now();
    while (parser.state() == ReplyParser::State::waiting && clock_.now() <= start + limit &&
           port_.wait_readable(start + limit) == WaitResult::data)
        parser.feed(receive());
    if (parser.state() != ReplyParser::State::answered) {
        failure_ = parser.unsound() ? BusFailure::bad_crc : BusFailure::silence;
        addresses_.failed(unit, parser.other_address());
        return 0;
    }
    failure_ = BusFailure::none;
    unsettled_ = false;
    unanswered_ = 0;
    last_reply_time = clock_.now() - start;
    reply = parser.reply();
    addresses_.answered(unit, static_cast<std::uint8_t>(reply[1]));
    return static_cast<std::int16_t>(reply.size());
}

std::int16_t BusLink::text_command(std::int16_t address, std::string_view command, std::string& reply) {
    reply.clear();
    const std::string frame = build_text_frame(address, command);
    unsettled_ = std::exchange(unanswered_text_, false) || unsettled_;
    for (int sending = 0; sending < 2; ++sending) {
        settle();
        TextReplyParser parser(frame);
        unsettled_ = true;
        if (!send(address, frame))
            return 1;
        const Instant limit = clock_.now() + seconds(text_reply_timeout);
        while (clock_.now() <= limit && port_.wait_readable(limit) == WaitResult::data) {
            const auto line = parser.feed(receive());
            if (line) {
                unsettled_ = false;
                reply = *line;
                return 0;
            }
        }
    }
    return 1;
}

std::int16_t BusLink::text_send(std::int16_t address, std::string_view command) {
    const std::string frame = build_text_frame(address, command);
    settle();
    send(address, frame);
    unanswered_text_ = true;
    return 0;
}

std::int16_t BusLink::open_bus_port(std::string_view port_name, int baud, int parity_code, int data_bits,
                                    int stop_bits) {
    return open_bus_port(LineSettings{std::string(port_name), baud, parity_code, data_bits, stop_bits});
}

std::int16_t BusLink::open_bus_port(const LineSettings& settings) {
    crc_ = Crc16(options_.crc);
    port_.close();
    if (settings != settings_)  // on the same line stand the same amplifiers
        addresses_.forget();
    settings_ = settings;
    open_failure_.clear();
    const std::string device = options_.ports.device(port_number(settings.port_name));
    if (device.empty()) {
        open_failure_ = settings.port_name + " is none of COM1: to COM4:";
        return 1;
    }
    if (!code_of_baud(settings.baud)) {
        open_failure_ = std::to_string(settings.baud) + " baud is not offered";
        return 1;
    }
    text_reply_timeout = (19200.0F / static_cast<float>(settings.baud) + 5.1F) / 18.0F;
    const PortResult result = port_.open({.device = device,
                                          .baud = settings.baud,
                                          .parity = parity_letter(settings.parity_code),
                                          .data_bits = settings.data_bits,
                                          .stop_bits = settings.stop_bits});
    open_failure_ = result.cause;
    unsettled_ = true;
    return result.ok() ? 0 : 1;
}

std::string BusLink::give_back(const std::optional<LineSettings>& before) {
    if (!before)
        close_bus_port();
    else if (settings() != before && open_bus_port(*before) != 0)
        return "The line on " + before->port_name + " with " + settings_string(*before) +
               " could not be opened again";
    return {};
}

void BusLink::close_bus_port() {
    port_.close();
}

void BusLink::delay_ms(float milliseconds_) {
    clock_.sleep_until(clock_.now() + seconds(milliseconds_ / 1000.0F));
}

std::int16_t BusLink::probe_link() {
    operator_.set_busy_pointer(true);
    std::string reply;
    probe_failed = bus_command(bus_address, k_probe_command, reply) < 6 ? 1 : 0;
    probe_marker = probe_failed != 0 ? "" : std::string(k_probe_command);
    operator_.set_busy_pointer(false);
    return probe_failed;
}

}  // namespace ampdesk
