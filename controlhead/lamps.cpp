#include "controlhead/lamps.h"

namespace ampdesk {

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
    if (head.alarm) {
        lite_service(head, 6, head.alarm->standby);
        lite_service(head, 8, head.alarm->rf_off);
    }
    lite_service(head, 5, head.status.hv_on);
    lite_service(head, 7, head.status.rf_on);
}

void updateLogic(Head& head) {
    head.shutdown_shown = head.shutdown_shown && in_shutdown(head);
    if (in_shutdown(head) && !head.shutdown_shown && !head.key_activity)
        head.want({Request::Kind::shutdown});
    show_state_lamps(head);
}

}  // namespace ampdesk
