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

Duration seconds(float value) {
    return std::chrono::duration_cast<Duration>(std::chrono::duration<float>(value));
}

}  // namespace

BusLink::BusLink(SerialPort& port, Clock& clock, BusOptions options)
    : port_(port),
      clock_(clock),
      options_(std::move(options)),
      crc_(options_.crc),
      addresses_(options_.reply_address) {}

void BusLink::begin(BusCommand command) {
    command_ = std::move(command);
    reply_ = {};
    cut_ = false;
    binary_.reset();
    text_.reset();
    const auto unit = static_cast<std::uint8_t>(command_.address);
    if (command_.form != CommandForm::binary) {
        reply_.frame = build_text_frame(command_.address, command_.command);
        if (command_.form == CommandForm::text) {
            text_.emplace(reply_.frame);
            unsettled_ = std::exchange(unanswered_text_, false) || unsettled_;
        }
    } else if (command_.command.size() <= k_longest_command) {
        reply_.frame = build_command_frame(crc_, unit, command_.command);
        binary_.emplace(crc_, reply_.frame, addresses_.looked_at(unit));
    } else {
        return end(BusFailure::not_sent);
    }
    stage_ = Stage::settling;
    const Instant now = clock_.now();
    settled_by_ = now + k_settle_limit;
    due_ = unsettled_ ? now + k_quiet : now;
}

std::optional<BusReply> BusLink::poll() {
    if (kept_ && stage_ == Stage::none)
        return std::exchange(kept_, std::nullopt);
    if (stage_ == Stage::none || stage_ == Stage::resting)
        receive();
    if (stage_ == Stage::settling)
        settle();
    if (stage_ == Stage::waiting) {
        const std::string bytes = receive();
        if (binary_)
            take_binary(bytes);
        else
            take_text(bytes);
    }
    if (stage_ != Stage::resting || clock_.now() < due_)
        return std::nullopt;
    stage_ = Stage::none;
    return std::move(reply_);
}

void BusLink::cut() {
    cut_ = stage_ == Stage::waiting;
}

BusReply BusLink::carry_out(BusCommand command) {
    const auto finish = [this] {
        for (;;) {
            if (auto reply = poll())
                return *reply;
            if (stage_ == Stage::resting)
                clock_.sleep_until(due_);
            else
                port_.wait_readable(due_);
        }
    };
    if (stage_ != Stage::none)
        kept_ = finish();
    begin(std::move(command));
    std::optional<BusReply> kept = std::exchange(kept_, std::nullopt);
    BusReply reply = finish();
    kept_ = std::move(kept);
    return reply;
}

// After a failed exchange a late answer may still be under way: it is waited for and thrown away,
// so that it is never taken for the next one.
void BusLink::settle() {
    const Instant now = clock_.now();
    const bool quiet = receive().empty();
    if (unsettled_ && port_.is_connected() && now < settled_by_) {
        if (!quiet)
            due_ = std::min(settled_by_, now + k_quiet);
        if (now < due_)
            return;
    }
    unsettled_ = false;
    send();
}

void BusLink::send() {
    const Instant now = clock_.now();
    spoken_to_ = command_.address;
    if (port_.write(reply_.frame, now + k_write_limit) != PortError::none) {
        unsettled_ = command_.form != CommandForm::text_only;
        return end(BusFailure::not_sent);
    }
    if (on_traffic)
        on_traffic({.sent = true, .address = command_.address, .bytes = reply_.frame});
    if (command_.form == CommandForm::text_only) {
        unanswered_text_ = true;
        return end(BusFailure::none);
    }
    unsettled_ = true;
    sent_at_ = clock_.now();
    due_ = sent_at_ + (binary_ ? command_.limit : seconds(text_reply_timeout));
    stage_ = Stage::waiting;
}

std::string BusLink::receive() {
    std::string bytes = port_.read_waiting();
    if (on_traffic && !bytes.empty())
        on_traffic({.sent = false, .address = spoken_to_, .bytes = bytes});
    return bytes;
}

void BusLink::take_binary(std::string_view bytes) {
    const auto unit = static_cast<std::uint8_t>(command_.address);
    const ReplyParser::State state = binary_->feed(bytes);
    if (state == ReplyParser::State::answered) {
        reply_.bytes = binary_->reply();
        addresses_.answered(unit, static_cast<std::uint8_t>(reply_.bytes[1]));
        end(BusFailure::none);
    } else if (state == ReplyParser::State::failed || clock_.now() >= due_ || cut_ || !port_.is_connected()) {
        addresses_.failed(unit, binary_->other_address());
        end(binary_->unsound() ? BusFailure::bad_crc : cut_ ? BusFailure::cut : BusFailure::silence);
    }
}

void BusLink::take_text(std::string_view bytes) {
    if (auto line = text_->feed(bytes)) {
        reply_.bytes = std::move(*line);
        end(BusFailure::none);
    } else if (clock_.now() >= due_ || cut_ || !port_.is_connected()) {
        end(cut_ ? BusFailure::cut : BusFailure::silence);
    }
}

void BusLink::end(BusFailure failure) {
    const Instant now = clock_.now();
    reply_.failure = failure;
    if (failure == BusFailure::none && stage_ == Stage::waiting) {
        unsettled_ = false;
        reply_.took = now - sent_at_;
    }
    due_ = now + (failure == BusFailure::not_sent ? Duration::zero() : command_.rest);
    stage_ = Stage::resting;
}

std::int16_t BusLink::bus_command(std::int16_t address, std::string_view command, std::string& reply,
                                  Duration limit) {
    BusReply result = carry_out({.address = address, .command = std::string(command), .limit = limit});
    reply = std::move(result.bytes);
    return static_cast<std::int16_t>(reply.size());
}

std::int16_t BusLink::text_command(std::int16_t address, std::string_view command, std::string& reply) {
    BusReply result;
    for (int sending = 0; sending < 2; ++sending) {
        result = carry_out({.address = address, .command = std::string(command), .form = CommandForm::text});
        if (result.failure != BusFailure::silence)
            break;
    }
    reply = std::move(result.bytes);
    return result.failure == BusFailure::none ? 0 : 1;
}

std::int16_t BusLink::open_bus_port(std::string_view port_name, int baud, int parity_code, int data_bits,
                                    int stop_bits) {
    return open_bus_port(LineSettings{std::string(port_name), baud, parity_code, data_bits, stop_bits});
}

std::int16_t BusLink::open_bus_port(const LineSettings& settings) {
    crc_ = Crc16(options_.crc);
    close_bus_port();
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

// What is under way ends without an answer.
void BusLink::close_bus_port() {
    port_.close();
    if (stage_ == Stage::settling || stage_ == Stage::waiting)
        end(stage_ == Stage::settling ? BusFailure::not_sent : BusFailure::silence);
}

}  // namespace ampdesk
