// The warning levels: one limit of the amplifier a page, read anew at every refresh. No level is
// written back; the adjust state only pages with the scroll bar.
#include <algorithm>
#include <array>
#include <string>

#include "controlhead/head.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "controlhead/value_rows.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

constexpr std::int16_t k_adjust = 1;
constexpr std::int16_t k_back = 2;
constexpr std::int16_t k_forth = 3;
constexpr std::int16_t k_more = 4;
constexpr const char* k_legend = "                MORE";

struct Level {
    const char* title;
    const char* band_title;  // where the amplifier has more than one band
    Limits::Item item;
};

constexpr std::array<Level, 6> k_levels{{
    {"over forward power:", "Ku over fwd power:", Limits::over_forward_power},
    {"under forward power:", "Ku under fwd power:", Limits::under_forward_power},
    {"over reverse power:", "Ku over rev power:", Limits::over_reverse_power},
    {"Cabinet Temperature:", "Cabinet Temperature:", Limits::cabinet},
    {"TWT Temperature:", "TWT Temperature:", Limits::tube},
    {"Helix Current:", "Helix Current:", Limits::helix_current},
}};

std::string tenths(double value) {
    return right_aligned(fixed_point(value, 1), 5);
}

std::string value_text(const Limits& limits, Limits::Item item) {
    const double value = shown(limits, item);
    switch (item) {
        case Limits::cabinet:
        case Limits::tube:
            return right_aligned(plain_number(value), 3) + "\xB0" + "C";
        case Limits::helix_current:
            return tenths(value) + "mA";
        default:
            return tenths(value) + " dBm";
    }
}

void show_scroll_bar(Head& head) {
    const int last = head.warnings.warn_page_count - 1;
    head.panel.set_scroll(
        {.visible = true, .minimum = 0, .maximum = last, .value = last - head.warnings.warn_page});
}

void enter_adjust_state(Head& head) {
    head.warnings.warn_editing = true;
    head.left_marker = '>';
    head.right_marker = '<';
}

void leave_adjust_state(Head& head) {
    head.warnings.warn_editing = false;
    rest_markers(head);
    lite_service(head, 1, 0);
    head.panel.hide_scroll();
}

// In the adjust state; the ends are ends, as those of the scroll bar.
void step_page(Head& head, int step) {
    head.warnings.warn_page = static_cast<std::int16_t>(
        std::clamp(head.warnings.warn_page + step, 0, head.warnings.warn_page_count - 1));
}

// As the page stands from when it was entered until the first tick with a level in hand.
void draw_first(Head& head) {
    ValueRows rows(head.panel, head.limits.has_value());
    head.panel.set_line(1, "Warning level for ");
    head.panel.set_line(2, "over forward power: ");
    rows.draw(3, [&] { return "    [" + value_text(*head.limits, k_levels[0].item) + "]"; });
    head.panel.set_line(4, k_legend);
    rows.finish();
}

void draw_page(Head& head) {
    const Level& level = k_levels.at(static_cast<std::size_t>(head.warnings.warn_page));
    ValueRows rows(head.panel, head.limits.has_value());
    head.panel.set_line(1, "Warning level for");
    head.panel.set_line(2, head.band.band_count != 0 ? level.band_title : level.title);
    rows.draw(3, [&] {
        const std::string value = value_text(*head.limits, level.item);
        return head.left_marker + ("    " + value) + head.right_marker;
    });
    head.panel.set_line(4, k_legend);
    if (head.warnings.warn_editing) {
        // The communication error screen may have put both out.
        lite_service(head, 1, 1);
        show_scroll_bar(head);
    }
    rows.finish();
}

void draw_warnings(Head& head) {
    if (head.warnings.warn_page < 0 || head.warnings.warn_page >= head.warnings.warn_page_count)
        return leave_sub_menu(head);
    if (head.warnings.entered)
        draw_first(head);
    else
        draw_page(head);
}

void tick_warnings(Head& head) {
    if (head.limits)
        head.warnings.entered = false;
}

void attach_warnings(Head& head, std::int16_t key) {
    head.warnings.entered = key == k_key_enter;
    if (key == k_key_enter) {
        head.warnings.warn_page = 0;
        head.warnings.warn_editing = false;
        head.warnings.warn_page_count = static_cast<std::int16_t>(k_levels.size());
        rest_markers(head);
    } else if (head.warnings.warn_editing) {
        if (key == k_adjust || key == k_key_exit)
            leave_adjust_state(head);
        else if (key == k_back || key == k_forth)
            step_page(head, key == k_back ? -1 : 1);
    } else {
        if (key == k_key_exit)
            return leave_sub_menu(head);
        if (key == k_adjust)
            enter_adjust_state(head);
        else if (key == k_more)
            head.warnings.warn_page =
                static_cast<std::int16_t>((head.warnings.warn_page + 1) % head.warnings.warn_page_count);
    }
    draw_warnings(head);
}

void scroll_warnings(Head& head, int value) {
    head.warnings.warn_page = static_cast<std::int16_t>(head.panel.scroll().maximum - value);
    head.warnings.entered = false;
    draw_warnings(head);
}

}  // namespace

// The bar runs upside down: its top is the last value.
extern const Screen k_warnings{.sub_menu = k_warning_levels,
                               .needs = k_needs_limits,
                               .draw = draw_warnings,
                               .tick = tick_warnings,
                               .attach = attach_warnings,
                               .from = 3,
                               .key = 0,
                               .scroll = scroll_warnings,
                               .keys = {"Adjust", "Previous page", "Next page"}};

}  // namespace ampdesk
