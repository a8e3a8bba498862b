#include "controlhead/font_rule.h"

namespace ampdesk {

bool accepted_font(const FontChoice& preset, const FontChoice& chosen) {
    return chosen.family == preset.family && chosen.bold == preset.bold && chosen.size >= k_smallest_size &&
           chosen.size <= k_largest_size;
}

Message font_refusal(const std::string& family) {
    return {.text = "You can only select Bold 13~15 " + family + " Fonts",
            .detail = {},
            .icon = Icon::exclamation,
            .buttons = Buttons::ok,
            .title = "Font Selection Failed"};
}

}  // namespace ampdesk
