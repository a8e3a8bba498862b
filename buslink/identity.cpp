#include "buslink/identity.h"

#include "buslink/wire/control_characters.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

constexpr std::string_view k_probe_command{"\x11", 1};
constexpr std::size_t k_shortest_answer = 6;  // bytes of a reply frame with at least one of content
constexpr int k_sendings = 2;                 // of a text that nobody answers

}  // namespace

BusCommand status_probe(int address) {
    return {.address = static_cast<std::int16_t>(address), .command = std::string(k_probe_command)};
}

bool answers_probe(const BusReply& reply) {
    return reply.bytes.size() >= k_shortest_answer;
}

std::string serial_number_of(std::string_view reply) {
    reply = reply.substr(0, reply.find(k_etx));
    reply = reply.substr(0, reply.find(k_cr));
    reply = reply.substr(reply.find('=') + 1);  // none: npos + 1 is 0
    if (!reply.empty() && reply.front() == k_stx)
        reply.remove_prefix(1);
    return std::string(trimmed(reply));
}

std::string amplifier_number(std::string_view serial_number) {
    return std::to_string(round_to_int32(lenient_number(serial_number)));
}

std::string model_of(std::string_view reply) {
    const std::size_t star = reply.find('*');
    if (star != std::string_view::npos)
        reply.remove_prefix(star + 1);
    else if (!reply.empty() && reply.front() == k_stx)
        reply.remove_prefix(1);
    reply = trimmed(reply);
    const std::size_t blank = reply.find(' ');
    return blank == std::string_view::npos ? std::string() : std::string(reply.substr(0, blank));
}

Identification::Identification(BusLink& bus, int address)
    : bus_(bus), address_(address), line_(bus.settings()) {}

std::optional<Instant> Identification::due() const {
    return state_ == State::working && !asked_ ? std::optional(Instant{}) : std::nullopt;
}

// A question to a person may have stood for long, and somebody may have opened another line meanwhile.
std::optional<BusCommand> Identification::next() {
    if (state_ != State::working)
        return std::nullopt;
    if (bus_.settings() != line_) {
        state_ = State::another_line;
        return std::nullopt;
    }
    asked_ = true;
    if (question_ == Question::status)
        return status_probe(address_);
    return BusCommand{.address = static_cast<std::int16_t>(address_),
                      .command = question_ == Question::number ? "RDS/N" : "*IDN?",
                      .form = CommandForm::text};
}

void Identification::ended(const BusReply& reply) {
    asked_ = false;
    if (state_ != State::working || reply.failure == BusFailure::cut)
        return;
    if (question_ == Question::status) {
        if (answers_probe(reply))
            ask(Question::number);
        else
            state_ = State::no_status;
        return;
    }
    if (reply.failure == BusFailure::silence && ++silences_ < k_sendings)
        return;
    const bool answered = reply.failure == BusFailure::none;
    if (question_ == Question::number) {
        serial_number_ = answered ? serial_number_of(reply.bytes) : std::string();
        if (serial_number_.empty())
            state_ = State::needs_number;
        else
            take_number();
    } else if (answered) {
        take_model(model_of(reply.bytes));
    } else {
        state_ = State::needs_band;
    }
}

void Identification::ask(Question question) {
    state_ = State::working;
    question_ = question;
    silences_ = 0;
}

void Identification::give_serial_number(std::string_view text) {
    serial_number_ = trimmed(text);
    if (serial_number_.empty())
        give_up();
    else
        take_number();
}

void Identification::give_band(std::string_view name) {
    take_model(name);
}

void Identification::take_number() {
    try {
        number_ = amplifier_number(serial_number_);
        ask(Question::model);
    } catch (const RunTimeError& error) {
        failure_ = error.what();
        state_ = State::number_too_large;
    }
}

void Identification::take_model(std::string_view model) {
    model_ = model;
    state_ = bus_.settings() == line_ ? State::done : State::another_line;
}

}  // namespace ampdesk
