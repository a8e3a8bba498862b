// The setup menus: the amplifier's settings a page at a time. Only the mode of the redundant switch
// can be changed from here.
#include <string>
#include <utility>

#include "amplifier/commands.h"
#include "controlhead/head.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

constexpr std::int16_t k_set = 1;
constexpr std::int16_t k_more = 4;
constexpr std::int16_t k_fixed_pages = 4;
constexpr const char* k_switch_title = "Redundant switch";
constexpr const char* k_set_more = "SET             MORE";
constexpr const char* k_only_more = "                MORE";

enum class Page { power_save, redundant_switch, remote, temperature, forward_power, reverse_power };

// The fixed pages are counted back from the end, so that the optional ones stand in front.
Page page_in_hand(const Head& head) {
    switch (head.setup.setup_page_count - head.setup.setup_page) {
        case 4:
            return Page::remote;
        case 3:
            return Page::temperature;
        case 2:
            return Page::forward_power;
        case 1:
            return Page::reverse_power;
        default:
            break;
    }
    const bool first = head.setup.setup_page == 0;
    return first && head.status.power_save_fitted ? Page::power_save : Page::redundant_switch;
}

void count_pages(Head& head) {
    head.setup.setup_page_count = k_fixed_pages;
    if (head.status.power_save_fitted)
        ++head.setup.setup_page_count;
    if (head.status.has_switch)
        ++head.setup.setup_page_count;
    if (head.setup.setup_page >= head.setup.setup_page_count)
        head.setup.setup_page = 0;
}

void show(Head& head, const char* first, const std::string& second, const char* third, const char* fourth) {
    head.panel.set_line(1, first);
    head.panel.set_line(2, second);
    head.panel.set_line(3, third);
    head.panel.set_line(4, fourth);
}

// A line with the unit of a power.
std::string unit_line(bool in_watts) {
    return std::string("in:  [") + (in_watts ? "Watts" : "dBm  ") + "]";
}

void draw_page(Head& head) {
    static constexpr const char* k_modes[] = {"Mode:[Off   ]", "Mode:[Manual]", "Mode:[Auto  ]"};
    count_pages(head);
    switch (page_in_hand(head)) {
        case Page::power_save:
            show(head, "Power save mode.", "Press SET to Change.", "Shut supply  [OFF ]", k_set_more);
            break;
        case Page::redundant_switch:
            show(head, k_switch_title, k_modes[head.setup.switch_mode], "Press SET to Change.", k_set_more);
            break;
        case Page::remote: {
            const bool on = head.status.remote_on;
            show(head, "", std::string("  Remote       ") + (on ? " ON" : "OFF"), "", k_only_more);
            break;
        }
        case Page::temperature: {
            const bool fahrenheit = head.status.fahrenheit;
            show(head, "Temperature reads", std::string("in:  [\xB0") + (fahrenheit ? "F" : "C") + "]", "",
                 k_only_more);
            break;
        }
        case Page::forward_power:
            show(head, "Forward Power reads", unit_line(head.status.forward_in_watts), "", k_only_more);
            break;
        case Page::reverse_power:
            show(head, "Reverse Power reads", unit_line(head.status.reverse_in_watts), "", k_only_more);
            break;
    }
}

// A status read since may have added or taken away pages in front: what counts is the page on the
// display.
bool switch_page_shown(const Head& head) {
    return page_in_hand(head) == Page::redundant_switch && head.panel.line(1).starts_with(k_switch_title);
}

// A mode that the amplifier refused is not shown as if it held.
void step_switch_mode(Head& head) {
    const auto next = static_cast<std::int16_t>(head.setup.mode_asked >= 2 ? 0 : head.setup.mode_asked + 1);
    head.setup.mode_asked = next;
    head.order({.command = set_switch_mode_command(next), .then = [next](Head& then, const Setting& setting) {
                    if (setting.outcome == Setting::Outcome::taken)
                        then.setup.switch_mode = next;
                    else
                        then.setup.mode_asked = then.setup.switch_mode;
                    if (then.sub_menu == k_setup_menus && !then.comm_error_shown)
                        draw_page(then);
                }});
}

// The pages show the status. What is in hand is drawn at once when it is of now, and again when it has been
// read anew.
void show_page(Head& head) {
    head.setup.status_awaited = true;
    head.want({Request::Kind::status});
    if (head.services.clock.now() - head.status_at <= k_oldest_drawn)
        return draw_page(head);
    for (const int line : {1, 2, 3}) head.panel.set_line(line, "");
    head.panel.set_line(4, k_only_more);
}

void attach_setup(Head& head, std::int16_t key) {
    if (key == k_key_exit) {
        head.setup.status_awaited = false;
        return leave_sub_menu(head);
    }
    if (key == k_key_enter)
        head.setup.setup_page = 0;
    else if (key == k_more)
        head.setup.setup_page =
            static_cast<std::int16_t>((head.setup.setup_page + 1) % head.setup.setup_page_count);
    else if (key == k_set && switch_page_shown(head))
        step_switch_mode(head);
    show_page(head);
}

void take_setup(Head& head, const Reading& reading) {
    if (reading.request.kind != Request::Kind::status || !std::exchange(head.setup.status_awaited, false))
        return;
    if (reading.good())
        return draw_page(head);
    head.tell(RunTimeError::no_answer().what());
    leave_sub_menu(head);
}

}  // namespace

// A status that cannot be read after a key is told, and the menus are left.
extern const Screen k_setup{
    .sub_menu = k_setup_menus, .attach = attach_setup, .from = 2, .key = 0, .take = take_setup};

}  // namespace ampdesk
