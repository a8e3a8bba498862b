// The modem behind the terminal's port: its command texts, whether it answers calls by itself, and
// hanging up as timed steps that hold up nobody.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "terminal/terminal_line.h"

namespace ampdesk {

enum class Volume { off, low, medium, high };

class Modem {
  public:
    static constexpr std::chrono::milliseconds k_dtr_low{500};
    static constexpr std::chrono::milliseconds k_silence{1000};  // around "+++"
    static constexpr std::chrono::seconds k_output_limit{10};    // for old output to leave first

    explicit Modem(TerminalLine& line) : line_(line) {}

    // Switches answering on, or off when it is on. False, and nothing switched, when the line takes
    // nothing.
    bool auto_answer();
    bool answers() const { return answers_; }

    // False when the line takes nothing.
    bool set_volume(Volume volume);

    // Begins to end the call: drops DTR, or where the port has none sends "+++" and "ATH" with a
    // second's silence around the "+++". Output that waits is thrown away. False when the line is not
    // there or a hang-up is under way.
    bool hang_up();

    // While true nobody else may send: it would break the silence.
    bool hanging_up() const { return step_ != Step::none; }

    // Does the step whose time has come. True when the call has just been ended. A line that goes
    // away ends it, too.
    bool tick();

    // When tick() has to be called next; nothing while no hang-up is under way.
    std::optional<Instant> due() const;

  private:
    enum class Step { none, dtr_low, silence_before, silence_after };

    TerminalLine& line_;
    bool answers_ = false;
    Step step_ = Step::none;
    Instant began_{};  // the hang-up
    Instant since_{};  // DTR low, or nothing sent
};

}  // namespace ampdesk
