// The display tick: what a head shows is kept up to date here, about twice a second.
#include <utility>

#include "controlhead/comm_faults.h"
#include "controlhead/keypad.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_beep{300};
constexpr double k_beep_seconds = 0.3;
constexpr double k_alarm_spacing = 15;  // seconds from the end of a beep to the next

bool beep_is_due(const Head& head, double now) {
    constexpr double k_clock_step = 0.001;
    const bool sounding = head.last_beep_time >= 0 &&
                          seconds_elapsed(now, head.last_beep_time) <= k_beep_seconds + k_clock_step;
    return !sounding && seconds_elapsed(head.last_beep_time, now) >= k_alarm_spacing;
}

// A shutdown beeps at every tick, an alarm every 15 s.
void sound_alarm(Head& head) {
    HeadServices& services = head.services;
    if (in_shutdown(head))
        return services.person.start_beep(k_beep);
    const double now = services.clock.seconds_since_midnight();
    if (!head.alarm || !head.alarm->active || !beep_is_due(head, now))
        return;
    services.person.start_beep(k_beep);
    head.last_beep_time = now + k_beep_seconds;
}

void blink(Head& head) {
    if (head.left_marker != '[')
        head.left_marker = head.left_marker == '>' ? ' ' : '>';
    if (head.right_marker != ']')
        head.right_marker = head.right_marker == '<' ? ' ' : '<';
    const bool alarm = head.alarm && head.alarm->active;
    head.attenuation.alarm_blink = head.gain_mode && alarm && !head.attenuation.alarm_blink;
}

void tick(Head& head) {
    sound_alarm(head);
    blink(head);
    if (in_shutdown(head))
        return;                                     // its display stays as it is
    if (head.redraw_request && head.menu_ptr != 0)  // no page is touched by it
        redraw_display(head);
    if (const auto tick_screen = screen_of(head).tick)
        tick_screen(head);
    update_menu(head);
    head.told_error.reset();
    head.overflow_count = 0;
}

}  // namespace

void updateDisplay(Head& head) {
    if (!head.comm_error_shown)
        guarded(head, [&] { tick(head); });
    const bool was_pressed = std::exchange(head.key_activity, false);
    if (was_pressed && !head.comm_error_shown)
        updateLogic(head);
}

void Form_Load(Head& head) {
    head.panel.hide_scroll();
    head.left_marker = '[';
    head.right_marker = ']';
    head.redraw_request = head.events.event_refresh = false;
    head.link_fail_count = 0;
    lite_service(head, 0, 0);
    for (int line = 1; line <= 4; ++line) head.panel.set_line(line, "");
}

}  // namespace ampdesk
