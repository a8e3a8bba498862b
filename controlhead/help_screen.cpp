// The help pages: the text written for the status screen from which help was called, four lines at
// a time.
#include <algorithm>
#include <string>

#include "controlhead/head.h"
#include "controlhead/help_file.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"

namespace ampdesk {

namespace {

constexpr int k_lines = 4;

int last_position(const Head& head) {
    return std::max(head.help.help_line_count - k_lines, 0);
}

// The scroll bar stands beside a section only.
void draw(Head& head) {
    const int stored = static_cast<int>(head.help.lines.size());
    for (int i = 0; i < k_lines; ++i) {
        const int n = head.help.position + i;
        head.panel.set_line(i + 1, n < stored ? head.help.lines[static_cast<std::size_t>(n)] : "");
    }
    head.panel.set_scroll({.visible = head.help.help_line_count > 0,
                           .minimum = 0,
                           .maximum = last_position(head),
                           .value = std::min<int>(head.help.position, last_position(head))});
}

void enter(Head& head) {
    lite_service(head, 88, 0);
    HelpSection section = read_help(head.services.options, head.menu_saved);
    if (section.refusal) {
        head.tell(section.refusal->what(), "mhelp.txt");
        return leave_sub_menu(head);
    }
    head.help.position = 0;
    head.help.help_line_count = static_cast<std::int16_t>(section.lines.size());
    head.help.lines = std::move(section.lines);
    if (section.file_missing)
        head.help.lines = {"No help file found", "", "Press key to exit"};
    draw(head);
}

void attach_help(Head& head, std::int16_t key) {
    static constexpr int k_steps[] = {0, -1, 1, -k_lines, k_lines};
    if (key == k_key_enter)
        return enter(head);
    if (key == k_key_refresh)
        return draw(head);
    if (key < k_key_refresh || key >= k_key_exit || head.help.help_line_count <= k_lines)
        return leave_sub_menu(head);
    head.help.position =
        static_cast<std::int16_t>(std::clamp(head.help.position + k_steps[key], 0, last_position(head)));
    draw(head);
}

void scroll_help(Head& head, int value) {
    if (value < 0 || value >= head.help.help_line_count)
        return leave_sub_menu(head);
    head.help.position = static_cast<std::int16_t>(value);
    draw(head);
}

}  // namespace

// The bar's value is the index, from 0, of the section's line on line 1.
extern const Screen k_help{.sub_menu = k_help_pages,
                           .attach = attach_help,
                           .key = 2,
                           .scroll = scroll_help,
                           .keys = {"Line up", "Line down", "Page up", "Page down"}};

}  // namespace ampdesk
