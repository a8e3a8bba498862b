#include "terminal/modem.h"

#include <algorithm>
#include <array>

namespace ampdesk {

namespace {

constexpr std::array<std::string_view, 4> k_volume_commands = {"ATM0\r", "ATL1M1\r", "ATL2M1\r", "ATL3M1\r"};

}  // namespace

bool Modem::auto_answer() {
    if (hanging_up() || !line_.send(answers_ ? "ATS0=0\r" : "ATE1M0S0=1\r"))
        return false;
    answers_ = !answers_;
    return true;
}

bool Modem::set_volume(Volume volume) {
    return !hanging_up() && line_.send(k_volume_commands[static_cast<std::size_t>(volume)]);
}

bool Modem::hang_up() {
    if (hanging_up() || !line_.is_connected())
        return false;
    line_.drop_output();
    began_ = since_ = line_.clock().now();
    step_ = line_.port()->set_dtr(false) ? Step::dtr_low : Step::silence_before;
    return true;
}

bool Modem::tick() {
    if (!hanging_up())
        return false;
    if (!line_.is_connected()) {
        step_ = Step::none;
        return false;
    }
    const Instant now = line_.clock().now();
    if (step_ == Step::silence_before && now - began_ < k_output_limit && !line_.output_left())
        since_ = now;
    if (now < since_ + (step_ == Step::dtr_low ? k_dtr_low : k_silence))
        return false;
    switch (step_) {
        case Step::dtr_low:
            line_.port()->set_dtr(true);
            break;
        case Step::silence_before:
            line_.send("+++");
            since_ = now;
            step_ = Step::silence_after;
            return false;
        default:
            line_.send("ATH\r");
            break;
    }
    step_ = Step::none;
    return true;
}

std::optional<Instant> Modem::due() const {
    if (!hanging_up())
        return std::nullopt;
    return since_ + (step_ == Step::dtr_low ? k_dtr_low : k_silence);
}

}  // namespace ampdesk
