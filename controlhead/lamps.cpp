#include "controlhead/lamps.h"

#include <tuple>

#include "controlhead/comm_faults.h"
#include "controlhead/shutdown.h"
#include "controlhead/status_screens.h"

namespace ampdesk {

namespace {

// The legend of status screen 1 depends on it.
auto switch_legend(const Status& status) {
    return std::tuple(status.has_switch, status.switch_positions >= 1, status.switch_locked);
}

// Reads the status. While the communication error screen is up this is only a look, which may fail
// without being counted: false.
bool look_at_status(Head& head) {
    const auto read = [&] { take_status(head, head.amplifier.read_status()); };
    if (!head.comm_error_shown) {
        read();
        return true;
    }
    head.amplifier.look_for_only(true);
    const bool answered = attempted(read);
    head.amplifier.look_for_only(false);
    return answered;
}

}  // namespace

void lite_service(Head& head, std::int16_t lamp, std::int16_t state) {
    using enum LampColour;
    constexpr LampColour k_lit[] = {yellow, yellow, yellow, yellow, red, green, red, green};
    if (lamp == 0 || lamp == 88) {
        for (int i = 1; i <= (lamp == 0 ? 8 : 4); ++i) head.panel.set_lamp(i, dark);
    } else if (lamp >= 1 && lamp <= 8) {
        head.panel.set_lamp(lamp, state == 1 ? k_lit[lamp - 1] : dark);
    }
}

void show_state_lamps(Head& head) {
    lite_service(head, 6, head.alarm.standby);
    lite_service(head, 8, head.alarm.rf_off);
    lite_service(head, 5, head.status.hv_on);
    lite_service(head, 7, head.status.rf_on);
}

void take_status(Head& head, const Status& status) {
    if (head.menu_ptr == 1 && switch_legend(status) != switch_legend(head.status))
        head.redraw_request = true;
    head.status = status;
}

bool poll_status(Head& head) {
    bool answered = false;
    guarded(head, [&] { answered = look_at_status(head); });
    if (answered)
        head.shutdown_shown = head.shutdown_shown && in_shutdown(head);
    return answered && !head.key_activity;
}

bool shutdown_waits(const Head& head) {
    return in_shutdown(head) && !head.shutdown_shown;
}

void show_state(Head& head) {
    if (head.key_activity)
        return;
    guarded(head, [&] {
        if (shutdown_waits(head))
            show_shutdown(head);
        read_alarm_state(head);
        show_state_lamps(head);
    });
}

}  // namespace ampdesk
