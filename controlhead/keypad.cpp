#include "controlhead/keypad.h"

#include <string>
#include <string_view>

#include "amplifier/commands.h"
#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "controlhead/status_screens.h"

namespace ampdesk {

namespace {

constexpr std::int16_t k_last_soft_key = 3;
constexpr std::int16_t k_exit = 4;

struct HardKey {
    const char* name;
    std::string_view setting;
};
constexpr HardKey k_hard_keys[] = {
    {"HV On", k_set_hv_on}, {"HV Off", k_set_hv_off}, {"RF On", k_set_rf_on}, {"RF Off", k_set_rf_off}};

constexpr std::chrono::milliseconds k_refusal_beep{100};

bool keys_dead(const Head& head) {
    return head.link_fail_count > 2;
}

void send(Head& head, std::string_view setting) {
    head.last_command_status = head.amplifier.set_item(setting);
}

// A hard key without a line is refused at once and never kept: it must not act when nobody expects it any
// more. False after a beep and a word in the status label.
bool line_is_there(Head& head, const HardKey& key) {
    const SerialPort& port = head.services.bus.port();
    if (port.is_connected())
        return true;
    Operator& person = head.services.person;
    person.start_beep(k_refusal_beep);
    person.show_status("JEX Amplifier " + head.identity.number + ": " + key.name + " not sent, " +
                       (port.is_open() ? "the line is lost" : "the port is not open"));
    return false;
}

// Goes to a status screen. When it could not be drawn, its header and legend stand alone until the
// next display tick, so that no key acts under the legend of another screen.
void show_screen(Head& head, std::int16_t screen) {
    head.menu_ptr = screen;
    rest_markers(head);
    if (!attempted([&] { set_menu(head); }))
        draw_outline(head);
}

void acknowledge_shutdown(Head& head) {
    send(head, k_acknowledge_shutdown);
    if (head.last_command_status != 0)
        return;
    head.shutdown_shown = false;
    show_screen(head, 1);
    head.redraw_request = true;  // drawn again once the status says that it is over
}

void adjust_attenuation(Head& head) {
    head.gain_mode = true;
    if (attempted([&] { set_gain(head, k_key_enter); }))
        return;
    head.gain_mode = false;  // without its scroll bar the mode is of no use
    set_gain(head, k_key_leave);
    draw_fixed_rows(head);  // its readout may already stand in the legend's place
    head.redraw_request = true;
}

// What the display does not offer is not sent: a status read may just have unlocked the output switch
// while the legend is still blank, or a screen that is about to be redrawn may show another legend.
bool offered(const Head& head, int key, std::string_view legend) {
    return head.panel.legend(key) == legend;
}

void change_band(Head& head) {
    const std::string command = next_band_command(head);
    if (command.empty() || !offered(head, 1, "BAND"))
        return show_screen(head, head.menu_ptr);
    send(head, command);
    // The label of the forward power follows the band, which may have changed though no reply came.
    head.redraw_request = true;
}

void throw_switch(Head& head) {
    if (offered(head, 2, "ANT") && head.status.switch_positions > 0 && !head.status.switch_locked)
        send(head, k_throw_switch);
}

// What a sub-menu could not draw the next display tick draws; one that has left itself leaves the
// outline of the status screen.
template <class Statement>
void in_sub_menu(Head& head, Statement statement) {
    if (attempted(statement))
        return;
    if (head.menu_ptr != 0)
        draw_outline(head);
    else
        head.events.event_refresh = true;
}

void enter(Head& head, SubMenu sub_menu) {
    in_sub_menu(head, [&] { enter_sub_menu(head, sub_menu); });
}

void press_status_key(Head& head, std::int16_t index) {
    const std::int16_t screen = head.menu_ptr;
    if (index == k_exit)
        return show_screen(head, 1);
    if (index == k_last_soft_key)
        return show_screen(head, screen >= 4 ? std::int16_t{1} : static_cast<std::int16_t>(screen + 1));
    if (index == 0 && (screen == 1 || screen == 4))
        return adjust_attenuation(head);
    if (index == 1 && screen == 1)
        return change_band(head);
    if (index == 2 && screen == 1 && head.status.has_switch)
        return throw_switch(head);
    if (const SubMenuRow* row = sub_menu_behind(screen, index))
        enter(head, row->number);
}

}  // namespace

void cmdKey_Click(Head& head, std::int16_t index) {
    if (index < 0 || index > k_exit || keys_dead(head))
        return;
    head.key_activity = true;
    if (in_shutdown(head)) {
        // Only an OK that is on the display acknowledges.
        if (index == k_last_soft_key && head.shutdown_shown)
            acknowledge_shutdown(head);
    } else if (head.gain_mode) {
        head.gain_mode = false;
        set_gain(head, k_key_leave);
        show_screen(head, head.menu_ptr);
    } else if (head.sub_menu != k_no_sub_menu) {
        in_sub_menu(head, [&] { attach_sub_menu(head, static_cast<std::int16_t>(index + 1)); });
    } else if (head.menu_ptr != 0) {
        press_status_key(head, index);
    } else {
        head.tell("menu ptr 0 fault");
    }
}

// Live but for the shutdown display: also while a screen waits to be drawn, and on the communication error
// screen, whose amplifier may well hear what it cannot answer.
void cmdHardkey_Click(Head& head, std::int16_t index) {
    if (index < 0 || index > 3 || head.shutdown_shown)
        return;
    const HardKey& key = k_hard_keys[index];
    if (!line_is_there(head, key))
        return;
    head.key_activity = true;
    send(head, key.setting);
    const bool answered = head.services.bus.failure() == BusFailure::none;
    if (!answered)
        line_is_there(head, key);  // it may have gone with the frame
    // Whoever did not answer the key will hardly answer a question, and each wait holds up the next key.
    if (!answered && head.comm_error_shown)
        return;
    head.amplifier.look_for_only(!answered || head.comm_error_shown);
    attempted([&] {
        take_status(head, head.amplifier.read_status());
        lite_service(head, 5, head.status.hv_on);
    });
    attempted([&] {
        read_alarm_state(head);
        lite_service(head, 6, head.alarm.standby);
        lite_service(head, 8, head.alarm.rf_off);
    });
    head.amplifier.look_for_only(false);
}

void picLight_Click(Head& head, std::int16_t index) {
    if (index >= 0 && index <= 3)
        cmdKey_Click(head, index);
    else if (index >= 4 && index <= 7)
        cmdHardkey_Click(head, static_cast<std::int16_t>(index - 4));
}

void VScroll1_Change(Head& head, int value) {
    ScrollBar scroll = head.panel.scroll();
    // A move by the program itself comes back as a change to where the bar already stands.
    // The bar may have got another range since the operator moved it.
    if (!scroll.visible || value == scroll.value || value < scroll.minimum || value > scroll.maximum)
        return;
    if (in_shutdown(head))
        return;  // the bar goes with the next visit, and locks with the keys
    head.key_activity = true;
    scroll.value = value;
    head.panel.set_scroll(scroll);
    attempted([&] {
        if (head.gain_mode)
            return set_attenuation(head, static_cast<std::int16_t>(value));
        const SubMenuRow* row = sub_menu_row(head.sub_menu);
        if (row != nullptr && row->scroll != nullptr)
            row->scroll(head, value);
    });
}

}  // namespace ampdesk
