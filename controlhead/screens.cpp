#include "controlhead/screens.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ampdesk {

// A row declares the screen, as it stands at the end of its own file, and points to it; nothing else has to
// know of it.
#define AMPDESK_SCREEN(name)                                               \
    [] {                                                                   \
        extern const Screen name; /* NOLINT(bugprone-macro-parentheses) */ \
        return &name;                                                      \
    }()

static const Screen* const k_screens[] = {
    AMPDESK_SCREEN(k_powers),        // status screen 1
    AMPDESK_SCREEN(k_hours),         // 2
    AMPDESK_SCREEN(k_temperatures),  // 3
    AMPDESK_SCREEN(k_tube),          // 4
    AMPDESK_SCREEN(k_help),          // HELP
    AMPDESK_SCREEN(k_setup),         // SETUP
    AMPDESK_SCREEN(k_warnings),      // WARNINGS
    AMPDESK_SCREEN(k_identity),      // INFO
    AMPDESK_SCREEN(k_events),        // EVENT
};

namespace {

constexpr Screen k_nothing{};

template <class Condition>
const Screen* first(Condition condition) {
    const auto* row = std::find_if(std::begin(k_screens), std::end(k_screens),
                                   [&](const Screen* screen) { return condition(*screen); });
    return row != std::end(k_screens) ? *row : nullptr;
}

}  // namespace

const Screen& screen_of(const Head& head) {
    const Screen* screen = first([&](const Screen& s) {
        return head.menu_ptr != 0 ? s.menu_ptr == head.menu_ptr
                                  : s.attach != nullptr && s.sub_menu == head.sub_menu;
    });
    return screen != nullptr ? *screen : k_nothing;
}

const Screen* sub_menu_behind(std::int16_t screen, std::int16_t key) {
    return first([&](const Screen& s) {
        return s.attach != nullptr && s.key == key && (s.from == 0 || s.from == screen);
    });
}

std::string key_name(const Head& head, int key) {
    const bool covered = head.shutdown_shown || head.comm_error_shown;
    if (covered || key < 0 || key > 3)
        return head.panel.legend(key);
    const bool any_key_leaves =
        head.gain_mode || (head.sub_menu == k_help_pages && head.help.help_line_count <= 4);
    if (any_key_leaves)
        return "Leave";
    const std::string legend = head.panel.legend(key);
    const char* words = screen_of(head).keys[key];
    return words == nullptr ? legend : words;
}

}  // namespace ampdesk
