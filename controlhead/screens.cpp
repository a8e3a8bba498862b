#include "controlhead/screens.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ampdesk {

namespace {

constexpr std::uint8_t k_both = k_needs_analog | k_needs_alarm;

constexpr Screen k_screens[] = {
    {.menu_ptr = 1, .needs = k_both, .draw = draw_powers},
    {.menu_ptr = 2, .needs = k_needs_analog, .draw = draw_hours},
    {.menu_ptr = 3, .needs = k_needs_analog, .draw = draw_temperatures},
    {.menu_ptr = 4, .needs = k_needs_analog, .draw = draw_tube},
    {.sub_menu = k_help_pages,
     .attach = attach_help,
     .key = 2,
     .scroll = scroll_help,
     .keys = {"Line up", "Line down", "Page up", "Page down"}},
    {.sub_menu = k_setup_menus, .attach = attach_setup, .from = 2, .key = 0, .take = take_setup},
    {.sub_menu = k_warning_levels,
     .needs = k_needs_limits,
     .draw = draw_warnings,
     .tick = tick_warnings,
     .attach = attach_warnings,
     .from = 3,
     .key = 0,
     .scroll = scroll_warnings,
     .keys = {"Adjust", "Previous page", "Next page"}},
    {.sub_menu = k_information,
     .attach = attach_info,
     .from = 2,
     .key = 1,
     .take = take_info,
     .keys = {"Leave", "Leave", "Leave", "Leave"}},
    {.sub_menu = k_event_list,
     .tick = tick_events,
     .attach = attach_event,
     .from = 4,
     .key = 1,
     .scroll = scroll_events,
     .take = take_event,
     .keys = {"Line up", "Line down", "Page up", "Page down"}},
};

constexpr Screen k_nothing{};

template <class Condition>
const Screen* first(Condition condition) {
    const auto* row = std::find_if(std::begin(k_screens), std::end(k_screens), condition);
    return row != std::end(k_screens) ? row : nullptr;
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
