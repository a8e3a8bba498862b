#include "controlhead/status_screens.h"

#include "controlhead/lamps.h"
#include "controlhead/screens.h"
#include "controlhead/value_rows.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

constexpr char k_degree = '\xB0';

std::string dbm(const Head& head, Analog::Item item) {
    return right_aligned(plain_number(shown(*head.analog, item)), 5) + " dBm";
}

std::string fixed(const Head& head, Analog::Item item, int decimals, std::size_t width) {
    return right_aligned(fixed_point(shown(*head.analog, item), decimals), width);
}

std::string running_time(const Head& head, Analog::Item hours, Analog::Item minutes) {
    return zero_padded(shown(*head.analog, hours), 5) + ":" + zero_padded(shown(*head.analog, minutes), 2);
}

std::string celsius(const Head& head, Analog::Item item) {
    return right_aligned(plain_number(shown(*head.analog, item)), 3) + k_degree + "C";
}

std::string screen_1_legend(const Head& head) {
    std::string legend = head.band.band_count != 0 ? "ATTN  BAND" : "ATTN      ";
    if (!head.status.has_switch)
        return legend + " HELP MORE";
    return legend +
           (head.status.switch_positions >= 1 && !head.status.switch_locked ? " ANT  MORE" : "      MORE");
}

void draw_alarm_row(Head& head) {
    if (!head.alarm)
        return head.panel.set_line(3, "");
    const std::string& text = head.alarm->text;
    const Status& status = head.status;
    if (!head.alarm->active && status.has_switch && status.switch_positions >= 1)
        head.panel.set_line(3,
                            left_aligned(text.substr(0, 16), 16) + (status.switch_locked ? "LOAD" : " ANT"));
    else
        head.panel.set_line(3, text);
}

void draw_powers(Head& head) {
    ValueRows rows(head.panel, head.analog.has_value());
    const bool label_is_known = head.band.reads_left == 0 || !head.band.band_name.empty();
    if (label_is_known)
        rows.draw(1, [&] { return head.band.fwd_label + dbm(head, Analog::forward_power); });
    rows.draw(2, [&] { return "Rev Power  " + dbm(head, Analog::reverse_power); });
    if (head.gain_mode)
        set_gain(head, k_key_refresh);
    else
        draw_alarm_row(head);
    rows.finish();
}

void draw_hours(Head& head) {
    ValueRows rows(head.panel, head.analog.has_value());
    rows.draw(2, [&] {
        return running_time(head, Analog::console_hours, Analog::console_minutes) + head.right_marker +
               "Console";
    });
    rows.draw(3, [&] {
        return running_time(head, Analog::rf_hours, Analog::rf_minutes) +
               (head.status.rf_on ? head.right_marker : '<') + "RF On";
    });
    rows.finish();
}

void draw_temperatures(Head& head) {
    ValueRows rows(head.panel, head.analog.has_value());
    rows.draw(2, [&] { return celsius(head, Analog::cabinet) + "<Inside Cabinet"; });
    rows.draw(3, [&] { return celsius(head, Analog::baseplate) + "<TWT Baseplate"; });
    rows.finish();
}

// The amplifier reports If, Eb and Ek as negative numbers; they are shown positive.
void draw_tube(Head& head) {
    ValueRows rows(head.panel, head.analog.has_value());
    rows.draw(1, [&] {
        return "Ef" + fixed(head, Analog::filament_voltage, 2, 6) + "v  If" +
               fixed(head, Analog::filament_current, 2, 5) + (head.status.filament_in_ma ? "ma" : "A");
    });
    rows.draw(2, [&] { return "Eb" + fixed(head, Analog::eb_voltage, 2, 6) + "kV "; });
    rows.draw(3, [&] {
        return "Ek" + fixed(head, Analog::cathode_voltage, 2, 6) + "kV Iw" +
               fixed(head, Analog::helix_current, 1, 5) + "ma";
    });
    if (head.gain_mode)
        set_gain(head, k_key_refresh);
    rows.finish();
}

}  // namespace

void show_gauge(Head& head) {
    const Quantity& forward = (*head.analog)[Analog::forward_power];
    const bool known = forward.kind != Quantity::Kind::overflowed;
    head.panel.set_gauge(known ? std::optional(forward.value) : std::nullopt);
}

void draw_fixed_rows(Head& head) {
    if (head.menu_ptr == 2)
        head.panel.set_line(1, " --System Hours--");
    if (head.menu_ptr == 3)
        head.panel.set_line(1, " --System Temps--");
    if (head.gain_mode || head.menu_ptr < 1 || head.menu_ptr > 4)
        return;
    const std::string legends[] = {screen_1_legend(head), "SETUP INFO HELP MORE", "WARNINGS   HELP MORE",
                                   "ATTN EVENT HELP MORE"};
    head.panel.set_line(4, legends[head.menu_ptr - 1]);
}

void draw_outline(Head& head) {
    for (int line = 1; line <= 4; ++line) head.panel.set_line(line, "");
    draw_fixed_rows(head);
}

extern const Screen k_powers{.menu_ptr = 1, .needs = k_needs_analog | k_needs_alarm, .draw = draw_powers};
extern const Screen k_hours{.menu_ptr = 2, .needs = k_needs_analog, .draw = draw_hours};
extern const Screen k_temperatures{.menu_ptr = 3, .needs = k_needs_analog, .draw = draw_temperatures};
extern const Screen k_tube{.menu_ptr = 4, .needs = k_needs_analog, .draw = draw_tube};

}  // namespace ampdesk
