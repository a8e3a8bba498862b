#include "station/opening.h"

#include <utility>

namespace ampdesk {

Opening::Opening(BusLink& bus, Operator& person, Questions& questions, int address, bool somebody_is_there,
                 std::function<void()> on_end)
    : who_(bus, address),
      operator_(person),
      questions_(questions),
      somebody_is_there_(somebody_is_there),
      on_end_(std::move(on_end)) {}

Opening::~Opening() {
    questions_.withdraw(question_);
    show_busy(false);
}

void Opening::show_busy(bool busy) {
    if (std::exchange(busy_, busy) != busy)
        operator_.set_busy_pointer(busy);
}

std::optional<BusCommand> Opening::next() {
    auto command = who_.next();
    show_busy(command.has_value());
    if (!command)
        follow();
    return command;
}

void Opening::ended(const BusReply& reply) {
    show_busy(false);
    who_.ended(reply);
    follow();
}

void Opening::follow() {
    using State = Identification::State;
    switch (who_.state()) {
        case State::working:
            return;
        case State::needs_number:
            return somebody_is_there_ ? ask({.kind = Question::Kind::text,
                                             .message = {.text = "Input amplifier serial number:"}},
                                            &Opening::take_number)
                                      : end(Outcome::no_number);
        case State::needs_band:
            return somebody_is_there_ ? ask({.kind = Question::Kind::band}, &Opening::take_band)
                                      : end(Outcome::no_model);
        case State::done:
            return end(Outcome::known);
        case State::no_status:
            return end(Outcome::no_status);
        case State::number_too_large:
            return end(Outcome::number_too_large);
        case State::another_line:
            return end(Outcome::another_line);
        case State::given_up:
            return end(Outcome::given_up);
    }
}

void Opening::ask(const Question& question, void (Opening::*take)(const std::string& text)) {
    question_ = questions_.ask(question, [this, take](const Reply& reply) {
        (this->*take)(reply.text);
        follow();
    });
}

void Opening::take_number(const std::string& text) {
    who_.give_serial_number(text);
}

void Opening::take_band(const std::string& text) {
    if (text.empty())
        who_.give_up();
    else
        who_.give_band(text);
}

void Opening::end(Outcome outcome) {
    outcome_ = outcome;
    if (const auto told = std::exchange(on_end_, nullptr))
        told();
}

}  // namespace ampdesk
