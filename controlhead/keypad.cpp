#include "controlhead/keypad.h"

#include <string>
#include <string_view>
#include <utility>

#include "amplifier/commands.h"
#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"

namespace ampdesk {

namespace {

constexpr std::int16_t k_last_soft_key = 3;
constexpr std::int16_t k_exit = 4;

struct HardKey {
    const char* name;
    std::string_view setting;
    bool off;
};
constexpr HardKey k_hard_keys[] = {{"HV On", k_set_hv_on, false},
                                   {"HV Off", k_set_hv_off, true},
                                   {"RF On", k_set_rf_on, false},
                                   {"RF Off", k_set_rf_off, true}};

constexpr std::chrono::milliseconds k_refusal_beep{100};

bool keys_dead(const Head& head) {
    return head.link_fail_count > 2;
}

void send(Head& head, std::string_view command, std::function<void(Head&, const Setting&)> then) {
    head.order({.command = std::string(command), .then = std::move(then)});
}

// A hard key without a line is refused at once and never kept: it must not act when nobody expects it any
// more. False after a beep and a word in the status label.
bool line_is_there(const Head& head, const char* key) {
    const SerialPort& port = head.services.bus.port();
    if (port.is_connected())
        return true;
    Operator& person = head.services.person;
    person.start_beep(k_refusal_beep);
    person.show_status(caption(head.identity) + ": " + key + " not sent, " +
                       (port.is_open() ? "the line is lost" : "the port is not open"));
    return false;
}

// The lamps follow a hard key at once. Whoever did not answer the key on the error screen will hardly answer
// a question.
void look_at_lamps(Head& head, const Setting& setting) {
    if (head.comm_error_shown && setting.outcome == Setting::Outcome::unanswered)
        return;
    head.want({Request::Kind::status});
    head.want({Request::Kind::alarm_state});
}

void show_screen(Head& head, std::int16_t screen) {
    head.menu_ptr = screen;
    rest_markers(head);
    set_menu(head);
}

// The status goes on telling of the shutdown until it has been read again.
void acknowledge_shutdown(Head& head) {
    if (std::exchange(head.acknowledging, true))
        return;
    send(head, k_acknowledge_shutdown, [](Head& then, const Setting& setting) {
        then.acknowledging = false;
        if (setting.outcome != Setting::Outcome::taken)
            return;
        then.status.in_shutdown = false;
        then.shutdown_shown = false;
        show_screen(then, 1);
        look_at_lamps(then, setting);
    });
}

void adjust_attenuation(Head& head) {
    head.gain_mode = true;
    let_go_of_old_values(head);
    attempted([&] { set_gain(head, k_key_enter); });
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
    // The label of the forward power follows the band, which may have changed though no reply came.
    send(head, command, [](Head& then, const Setting&) { then.redraw_request = true; });
}

void throw_switch(Head& head) {
    if (offered(head, 2, "ANT") && head.status.switch_positions > 0 && !head.status.switch_locked)
        send(head, k_throw_switch, [](Head& then, const Setting&) { then.want({Request::Kind::status}); });
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
    if (const Screen* sub_menu = sub_menu_behind(screen, index))
        enter_sub_menu(head, sub_menu->sub_menu);
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
        attempted([&] { attach_sub_menu(head, static_cast<std::int16_t>(index + 1)); });
    } else if (head.menu_ptr != 0) {
        press_status_key(head, index);
    } else {
        head.tell("menu ptr 0 fault");
    }
}

// Live but for the shutdown display: also while a screen waits to be drawn, and on the communication error
// screen, whose amplifier may well hear what it cannot answer.
void cmdHardkey_Click(Head& head, std::int16_t index, Instant pressed_at) {
    if (index < 0 || index > 3 || head.shutdown_shown)
        return;
    const HardKey& key = k_hard_keys[index];
    if (!line_is_there(head, key.name))
        return;
    head.key_activity = true;
    head.order({.command = std::string(key.setting),
                .then = look_at_lamps,
                .made_at = pressed_at,
                .key = key.name,
                .only_fresh = !key.off,
                .urgent = key.off});
}

void take_setting(Head& head, const Order& order, const Setting& setting) {
    head.last_command_status = setting.outcome == Setting::Outcome::taken ? 0 : 1;
    if (!setting.refusal.empty())
        head.tell(setting.refusal);
    const bool answered =
        setting.outcome == Setting::Outcome::taken || setting.outcome == Setting::Outcome::refused;
    if (order.key != nullptr && !answered)
        line_is_there(head, order.key);  // it may have gone with the frame
    if (order.then)
        attempted([&] { order.then(head, setting); });
}

void picLight_Click(Head& head, std::int16_t index, Instant pressed_at) {
    if (index >= 0 && index <= 3)
        cmdKey_Click(head, index);
    else if (index >= 4 && index <= 7)
        cmdHardkey_Click(head, static_cast<std::int16_t>(index - 4), pressed_at);
}

void VScroll1_Change(Head& head, int value) {
    ScrollBar scroll = head.panel.scroll();
    // A move by the program itself comes back as a change to where the bar already stands.
    // The bar may have got another range since the operator moved it.
    if (!scroll.visible || value == scroll.value || value < scroll.minimum || value > scroll.maximum)
        return;
    if (in_shutdown(head))
        return;  // the bar goes when the display is drawn next, and locks with the keys
    head.key_activity = true;
    scroll.value = value;
    head.panel.set_scroll(scroll);
    attempted([&] {
        if (head.gain_mode)
            return set_attenuation(head, static_cast<std::int16_t>(value));
        if (const auto move = screen_of(head).scroll)
            move(head, value);
    });
}

}  // namespace ampdesk
