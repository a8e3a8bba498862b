// Who is at the other end: the serial number and the model that an amplifier reports of itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "buslink/bus_guest.h"

namespace ampdesk {

// The shortest question to an amplifier: for its status.
BusCommand status_probe(int address);

// Whether that is a reply to it: an empty one is none.
bool answers_probe(const BusReply& reply);

// The number in a reply to "RDS/N": cut before ETX; after the first "=" when there is one; without
// the leading STX; trimmed. "RDS/N=1234" and "1234" both give "1234". Empty when nothing is left.
std::string serial_number_of(std::string_view reply);

// The amplifier number of a serial number: its numeric value, rounded, in decimal without blanks.
// Throws Overflow when 32 bits do not hold it.
std::string amplifier_number(std::string_view serial_number);

// The model in a reply to "*IDN?": what follows the first "*" (all of it when there is none),
// trimmed, up to its first blank. A text without a blank there has no model and gives an empty one.
std::string model_of(std::string_view reply);

// Finds out who answers at an address: looks for an amplifier, asks for its serial number, then for its
// model. What the amplifier does not tell, the owner has to ask a person for; this asks nobody.
class Identification : public BusGuest {
  public:
    enum class State {
        working,           // there are exchanges to be made
        needs_number,      // until give_serial_number or give_up
        needs_band,        // until give_band or give_up
        done,              // number() and model() stand
        no_status,         // nobody answers there
        number_too_large,  // failure() says so; no 32 bits hold serial_number()
        another_line,      // than at the beginning is open: the same address is another amplifier there
        given_up,
    };

    // On the line that is open now.
    Identification(BusLink& bus, int address);

    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    State state() const { return state_; }
    int address() const { return address_; }

    void give_serial_number(std::string_view text);  // a blank one gives up
    void give_band(std::string_view name);           // for the model; may be empty
    void give_up() { state_ = State::given_up; }     // also with an exchange under way

    const std::string& serial_number() const { return serial_number_; }
    const std::string& number() const { return number_; }  // as amplifier_number gives it
    const std::string& model() const { return model_; }
    const std::string& failure() const { return failure_; }

  private:
    enum class Question { status, number, model };
    void ask(Question question);
    void take_number();
    void take_model(std::string_view model);

    BusLink& bus_;
    const int address_;
    const std::optional<LineSettings> line_;
    State state_ = State::working;
    Question question_ = Question::status;
    int silences_ = 0;  // of the text in hand
    bool asked_ = false;
    std::string serial_number_;
    std::string number_;
    std::string model_;
    std::string failure_;
};

}  // namespace ampdesk
