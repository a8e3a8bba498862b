// Which fonts the operator may choose for the display of a control head.
#pragma once

#include <string>

#include "platform/operator.h"

namespace ampdesk {

inline constexpr int k_smallest_size = 13;  // points
inline constexpr int k_largest_size = 15;

struct FontChoice {
    std::string family;  // UTF-8
    bool bold = true;
    double size = 14;  // points
};

// Only the size may differ from what was preset, and it lies from 13 to 15.
bool accepted_font(const FontChoice& preset, const FontChoice& chosen);

// What the operator is told when the choice is not accepted; `family` is the display's font.
Message font_refusal(const std::string& family);

}  // namespace ampdesk
