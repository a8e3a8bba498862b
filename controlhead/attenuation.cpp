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

namespace ampdesk {

namespace {

constexpr std::int16_t k_most = 300;  // tenths of a dB
constexpr int k_tenths = 10;

// Two digits at least before the point: "03.5".
std::string two_digits_one_decimal(double value) {
    const std::string figures = fixed_point(std::abs(value), 1);
    const bool negative = value < 0 && figures != "0.0";
    return (negative ? "-" : "") + std::string(figures.size() < 4 ? 4 - figures.size() : 0, '0') + figures;
}

// An active alarm blinks at the rate of the ticks.
void draw_helix_or_alarm(Head& head) {
    if (head.alarm && head.alarm->active)
        return head.panel.set_line(3, head.attenuation.alarm_blink ? "" : head.alarm->text);
    ValueRows rows(head.panel, head.alarm && head.analog);
    rows.draw(3, [&] {
        const double milliamperes = shown(*head.analog, Analog::helix_current);
        return "Helix Current" + right_aligned(two_digits_one_decimal(milliamperes), 5) + "ma";
    });
    rows.finish();
}

// From the analog block in hand. Without a value the readout is blank, and the mode can be left all the same.
void draw_readout(Head& head) {
    if (head.menu_ptr != 1 && head.menu_ptr != 4)
        return;
    lite_service(head, 1, 1);  // the communication error screen may have put it out
    const auto readout = [&](const std::string& decibels) {
        head.panel.set_line(
            4, std::string("ATTN") + head.left_marker + right_aligned(decibels, 4) + "dB     MORE");
    };
    readout("");
    if (head.analog)
        readout(plain_number(shown(*head.analog, Analog::attenuation)));
    if (head.menu_ptr == 1)
        draw_helix_or_alarm(head);
}

void leave(Head& head) {
    head.attenuation.follow_amplifier = false;
    head.panel.hide_scroll();
    lite_service(head, 1, 0);
    head.left_marker = '[';
}

}  // namespace

void assign_potValue(Head& head, int value) {
    ScrollBar scroll = head.panel.scroll();
    scroll.value = std::max(scroll.minimum, std::min(value, scroll.maximum));
    head.panel.set_scroll(scroll);
}

void place_bar(Head& head) {
    const bool another_move_waits = std::any_of(head.orders.begin(), head.orders.end(),
                                                [](const Order& order) { return order.replaceable; });
    if (!head.gain_mode || !head.attenuation.follow_amplifier || !head.analog || another_move_waits)
        return;
    head.attenuation.follow_amplifier = false;
    const Quantity& attenuation = (*head.analog)[Analog::attenuation];
    if (attenuation.kind == Quantity::Kind::overflowed) {  // without its scroll bar the mode is of no use
        head.gain_mode = false;
        leave(head);
        return draw_fixed_rows(head);  // its readout stands in the legend's place
    }
    head.attenuation.atten_value = round_to_int16(attenuation.value * k_tenths);
    head.panel.set_scroll({.visible = true, .minimum = 0, .maximum = k_most, .value = 0});
    assign_potValue(head, head.attenuation.atten_value);
}

// When the amplifier does not take the value the bar goes back to where the amplifier was when last heard of,
// then to where it is.
void set_attenuation(Head& head, std::int16_t value) {
    if (value < 0 || value > k_most)
        return;
    while (!head.orders.empty() && head.orders.back().replaceable) head.orders.pop_back();
    head.order({.command = set_attenuation_command(value),
                .then =
                    [value](Head& then, const Setting& setting) {
                        if (setting.outcome == Setting::Outcome::taken) {
                            then.attenuation.atten_value = value;
                        } else if (then.gain_mode) {
                            assign_potValue(then, then.attenuation.atten_value);
                            then.attenuation.follow_amplifier = true;
                        }
                        then.want({Request::Kind::analog});
                    },
                .replaceable = true});
}

void set_gain(Head& head, std::int16_t key) {
    switch (key) {
        case k_key_leave:
            return leave(head);
        case k_key_enter:
            head.left_marker = '>';
            head.attenuation.follow_amplifier = true;
            place_bar(head);
            return head.gain_mode ? draw_readout(head) : void();
        case k_key_refresh:
            return draw_readout(head);
        default:
            return set_attenuation(head, static_cast<std::int16_t>(key - 1));
    }
}

}  // namespace ampdesk
