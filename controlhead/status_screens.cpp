#include "controlhead/status_screens.h"

#include "controlhead/lamps.h"
#include "controlhead/screens.h"
#include "controlhead/value_rows.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

// Words of the analog block, from 1.
enum AnalogItem : std::int16_t {
    k_forward_power = 1,     // 0.1 dBm
    k_reverse_power = 2,     // 0.1 dBm
    k_cathode_voltage = 3,   // -V
    k_helix_current = 4,     // 0.01 mA
    k_filament_voltage = 5,  // mV
    k_filament_current = 6,  // negative, 0.001 of the unit shown
    k_baseplate = 8,         // degrees C
    k_cabinet = 9,           // degrees C
    k_console_hours = 10,
    k_rf_hours = 11,
    k_console_minutes = 13,
    k_rf_minutes = 14,
    k_eb_voltage = 15,  // -V
};

constexpr char k_degree = '\xB0';

std::string dbm(const Head& head, AnalogItem item) {
    return right_aligned(plain_number(head.amplifier.get_ana_item(item) / 10), 5) + " dBm";
}

std::string scaled(const Head& head, AnalogItem item, double divisor, int decimals, std::size_t width) {
    return right_aligned(fixed_point(head.amplifier.get_ana_item(item) / divisor, decimals), width);
}

std::string running_time(const Head& head, AnalogItem hours, AnalogItem minutes) {
    return zero_padded(head.amplifier.get_ana_item(hours), 5) + ":" +
           zero_padded(head.amplifier.get_ana_item(minutes), 2);
}

std::string celsius(const Head& head, AnalogItem item) {
    return right_aligned(plain_number(head.amplifier.get_ana_item(item)), 3) + k_degree + "C";
}

bool switch_locked(const Head& head) {
    return (head.switch_state & 1) != 0;
}

std::string screen_1_legend(const Head& head) {
    std::string legend = head.band_count != 0 ? "ATTN  BAND" : "ATTN      ";
    if (!head.has_switch)
        return legend + " HELP MORE";
    return legend + (head.switch_count >= 1 && !switch_locked(head) ? " ANT  MORE" : "      MORE");
}

void draw_attenuation(Head& head) {
    lite_service(head, 1, 1);
    set_gain(head, 0);
}

void draw_alarm_row(Head& head) {
    const std::string reply = read_alarm_state(head);
    head.alarm_text = after_comma(reply);
    if (reply.empty())
        return;
    const bool switch_shown = reply[0] != '1' && head.has_switch && head.switch_count >= 1;
    if (switch_shown)
        head.panel.set_line(
            3, left_aligned(head.alarm_text.substr(0, 16), 16) + (switch_locked(head) ? "LOAD" : " ANT"));
    else
        head.panel.set_line(3, head.alarm_text);
}

void draw_powers(Head& head) {
    ValueRows rows(head.panel);
    rows.draw(1, [&] { return head.fwd_label + dbm(head, k_forward_power); });
    rows.draw(2, [&] { return "Rev Power  " + dbm(head, k_reverse_power); });
    if (head.gain_mode)
        draw_attenuation(head);
    else
        draw_alarm_row(head);
    rows.finish();
}

void draw_hours(Head& head) {
    const bool rf_on = (head.status_byte & k_status_rf_on) != 0;
    ValueRows rows(head.panel);
    rows.draw(2, [&] {
        return running_time(head, k_console_hours, k_console_minutes) + head.right_marker + "Console";
    });
    rows.draw(3, [&] {
        return running_time(head, k_rf_hours, k_rf_minutes) + (rf_on ? head.right_marker : '<') + "RF On";
    });
    rows.finish();
}

void draw_temperatures(Head& head) {
    ValueRows rows(head.panel);
    rows.draw(2, [&] { return celsius(head, k_cabinet) + "<Inside Cabinet"; });
    rows.draw(3, [&] { return celsius(head, k_baseplate) + "<TWT Baseplate"; });
    rows.finish();
}

// The amplifier reports If, Eb and Ek as negative numbers; they are shown positive.
void draw_tube(Head& head) {
    ValueRows rows(head.panel);
    rows.draw(1, [&] {
        return "Ef" + scaled(head, k_filament_voltage, 1000, 2, 6) + "v  If" +
               scaled(head, k_filament_current, -1000, 2, 5) + (head.filament_in_ma ? "ma" : "A");
    });
    rows.draw(2, [&] { return "Eb" + scaled(head, k_eb_voltage, -1000, 2, 6) + "kV "; });
    rows.draw(3, [&] {
        return "Ek" + scaled(head, k_cathode_voltage, -1000, 2, 6) + "kV Iw" +
               scaled(head, k_helix_current, 100, 1, 5) + "ma";
    });
    if (head.gain_mode)
        draw_attenuation(head);
    rows.finish();
}

}  // namespace

void read_analog(Head& head) {
    head.amplifier.get_ana_block();
    try {
        head.panel.set_gauge(head.amplifier.get_ana_item(k_forward_power) / 10);
    } catch (const RunTimeError&) {
        head.panel.set_gauge(std::nullopt);
    }
}

std::string read_alarm_state(Head& head) {
    return head.amplifier.read_itemAll(k_alarm_request);
}

std::string_view after_comma(std::string_view reply) {
    return reply.substr(reply.find(',') + 1);  // npos + 1 is 0
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

void draw_value_rows(Head& head) {
    switch (head.menu_ptr) {
        case 1:
            return draw_powers(head);
        case 2:
            return draw_hours(head);
        case 3:
            return draw_temperatures(head);
        case 4:
            return draw_tube(head);
        default:
            return;
    }
}

void draw_outline(Head& head) {
    for (int line = 1; line <= 4; ++line) head.panel.set_line(line, "");
    draw_fixed_rows(head);
}

}  // namespace ampdesk
