// The opening of an amplifier: who answers at an address, and from the operator what the amplifier does not
// tell.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "buslink/identity.h"
#include "station/questions.h"

namespace ampdesk {

class Opening : public BusGuest {
  public:
    enum class Outcome {
        known,
        no_status,         // nobody answers there
        no_number,         // nobody is there to be asked for the serial number …
        no_model,          // … or for the band
        number_too_large,  // what() says so, cause() which
        another_line,      // has been opened meanwhile
        given_up,          // by the operator
    };

    // On the line that is open now. `on_end` is called once, and the opening may be gone when it returns.
    Opening(BusLink& bus, Operator& person, Questions& questions, int address, bool somebody_is_there,
            std::function<void()> on_end);
    ~Opening() override;
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

    std::optional<Instant> due() const override { return who_.due(); }
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    Outcome outcome() const { return outcome_; }
    std::int16_t address() const { return static_cast<std::int16_t>(who_.address()); }
    const std::string& number() const { return who_.number(); }
    const std::string& model() const { return who_.model(); }
    const std::string& what() const { return who_.failure(); }
    std::string cause() const { return "Serial number " + who_.serial_number() + " is too large"; }

  private:
    void follow();
    void ask(const Question& question, void (Opening::*take)(const std::string& text));
    void take_number(const std::string& text);
    void take_band(const std::string& text);
    void end(Outcome outcome);
    void show_busy(bool busy);

    Identification who_;
    Operator& operator_;
    Questions& questions_;
    const bool somebody_is_there_;
    std::function<void()> on_end_;
    Outcome outcome_ = Outcome::given_up;
    int question_ = 0;
    bool busy_ = false;
};

}  // namespace ampdesk
