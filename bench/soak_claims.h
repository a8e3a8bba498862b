// What the panel of a control head says about its amplifier, as claims about the amplifier's replies.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "controlhead/control_head.h"

namespace ampdesk::bench {

// What something on the panel says about a reply's payload.
struct Claim {
    std::string command;
    std::function<bool(const std::string& payload)> holds;
};
using Claims = std::vector<Claim>;  // one of them must be true; none for what says nothing

Claims claims_of_row(const ControlHead& head, int row, const std::string& text);
Claims claims_of_lamp(int lamp, LampColour colour);
Claims claims_of_gauge(double dbm);

// Of the whole shutdown display: number and reason.
Claims claims_of_shutdown(const Panel& panel);

// The request whose reply fills the row of the screen in hand; empty for a row without a value.
std::string_view source_of_row(const ControlHead& head, int row);

bool shows_error(const Panel& panel);
bool shows_shutdown(const Panel& panel);

// A shutdown that is known, or the communication error, is on the display or about to be.
bool is_dark(const ControlHead& head);
bool shows_status_screen(const ControlHead& head);

std::string padded(std::string text, std::size_t width);

}  // namespace ampdesk::bench
