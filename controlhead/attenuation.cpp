// The attenuation adjustment: scroll bar, readout in place of the soft-key legend, helix current.
#include <algorithm>
#include <cmath>
#include <string>

#include "amplifier/commands.h"
#include "controlhead/lamps.h"
#include "controlhead/screens.h"
#include "controlhead/status_screens.h"
#include "controlhead/value_rows.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

constexpr std::int16_t k_most = 300;  // tenths of a dB
constexpr int k_tenths = 10;

void take_attenuation(Head& head) {
    head.attenuation.atten_value = round_to_int16(shown(head.analog, Analog::attenuation) * k_tenths);
}

// Two digits at least before the point: "03.5".
std::string two_digits_one_decimal(double value) {
    const std::string figures = fixed_point(std::abs(value), 1);
    const bool negative = value < 0 && figures != "0.0";
    return (negative ? "-" : "") + std::string(figures.size() < 4 ? 4 - figures.size() : 0, '0') + figures;
}

// An active alarm blinks at the rate of the refreshes.
void draw_helix_or_alarm(Head& head) {
    read_alarm_state(head);
    if (head.alarm.active) {
        head.attenuation.alarm_blink = !head.attenuation.alarm_blink;
        head.panel.set_line(3, head.attenuation.alarm_blink ? "" : head.alarm.text);
    } else {
        const double milliamperes = shown(head.analog, Analog::helix_current);
        head.panel.set_line(3,
                            "Helix Current" + right_aligned(two_digits_one_decimal(milliamperes), 5) + "ma");
    }
}

// From the analog block in hand.
void draw_readout(Head& head) {
    if (head.menu_ptr != 1 && head.menu_ptr != 4)
        return;
    const std::string decibels = plain_number(shown(head.analog, Analog::attenuation));
    head.panel.set_line(4,
                        std::string("ATTN") + head.left_marker + right_aligned(decibels, 4) + "dB     MORE");
    if (head.menu_ptr == 1)
        draw_helix_or_alarm(head);
}

void enter(Head& head) {
    take_attenuation(head);
    const int value = std::clamp<int>(head.attenuation.atten_value, 0, k_most);
    head.panel.set_scroll({.visible = true, .minimum = 0, .maximum = k_most, .value = value});
    lite_service(head, 1, 1);
    head.left_marker = '>';
}

// The amplifier did not take the value: the bar goes back to where the amplifier is, or was when
// last heard of.
void put_bar_back(Head& head) {
    try {
        read_analog(head);
        take_attenuation(head);
    } catch (const RunTimeError&) {
        assign_potValue(head, head.attenuation.atten_value);
        throw;
    }
    assign_potValue(head, head.attenuation.atten_value);
}

}  // namespace

void assign_potValue(Head& head, int value) {
    ScrollBar scroll = head.panel.scroll();
    scroll.value = std::max(scroll.minimum, std::min(value, scroll.maximum));
    head.panel.set_scroll(scroll);
}

void set_attenuation(Head& head, std::int16_t value) {
    if (value < 0 || value > k_most)
        return;
    head.last_command_status = head.amplifier.set_item(set_attenuation_command(value));
    if (head.last_command_status == 0)
        head.attenuation.atten_value = value;
    else
        put_bar_back(head);
    read_analog(head);
    draw_readout(head);
}

void set_gain(Head& head, std::int16_t key) {
    switch (key) {
        case k_key_leave:
            head.panel.hide_scroll();
            lite_service(head, 1, 0);
            head.left_marker = '[';
            return;
        case k_key_enter:
            read_analog(head);
            enter(head);
            return draw_readout(head);
        case k_key_refresh:
            read_analog(head);
            return draw_readout(head);
        default:
            return set_attenuation(head, static_cast<std::int16_t>(key - 1));
    }
}

}  // namespace ampdesk
