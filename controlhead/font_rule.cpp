// The rule of the font dialog.
#include "controlhead/font_rule.h"

namespace ampdesk {

bool accepted_font(const FontChoice& shown, const FontChoice& chosen) {
    return chosen.family == shown.family && chosen.bold == shown.bold && chosen.size >= 13 &&
           chosen.size <= 15;
}

Message font_refusal(const FontChoice& shown) {
    return {.text = "You can only select Bold 13~15 " + shown.family + " Fonts",
            .detail = {},
            .icon = Icon::exclamation,
            .buttons = Buttons::ok,
            .title = "Font Selection Failed"};
}

}  // namespace ampdesk
