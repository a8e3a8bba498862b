#include "controlhead/lamps.h"

#include <string>

#include "controlhead/comm_faults.h"
#include "controlhead/shutdown.h"

namespace ampdesk {

namespace {

// The legend of status screen 1 depends on these.
struct SwitchLegend {
    explicit SwitchLegend(const Head& head)
        : fitted(head.has_switch), usable(head.switch_count >= 1), locked((head.switch_state & 1) != 0) {}
    bool operator==(const SwitchLegend&) const = default;
    bool fitted;
    bool usable;
    bool locked;
};

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// Reads the status. While the communication error screen is up this is only a look, which may fail
// without being counted: false.
bool read_status(Head& head) {
    AmplifierAccess& amplifier = head.amplifier;
    std::string payload;
    amplifier.look_for_only(head.comm_error_shown);
    const auto read = [&] { payload = amplifier.read_itemAll(k_status_request); };
    if (!head.comm_error_shown) {
        read();
    } else {
        const bool answered = attempted(read);
        amplifier.look_for_only(false);
        if (!answered)
            return false;
    }
    take_status(head, payload);
    return true;
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

void show_state_lamps(Head& head, std::string_view alarm_state) {
    lite_service(head, 6, contains(alarm_state, "Standby"));
    lite_service(head, 8, contains(alarm_state, "RF off"));
    lite_service(head, 5, (head.status_byte & k_status_hv_on) != 0);
    lite_service(head, 7, (head.status_byte & k_status_rf_on) != 0);
}

void take_status(Head& head, const std::string& payload) {
    const auto field = [&](std::size_t position) {
        const bool there = position <= payload.size();
        return static_cast<std::int16_t>(there ? static_cast<unsigned char>(payload[position - 1]) : 0);
    };
    const SwitchLegend before(head);
    head.status_text = payload;
    head.status_byte = field(1);
    head.settings_byte = field(2);
    head.filament_in_ma = (field(3) & 1) != 0;
    head.has_switch = (field(3) & 2) != 0;
    head.switch_state = field(5);
    head.switch_count = field(6);
    if (head.menu_ptr == 1 && SwitchLegend(head) != before)
        head.redraw_request = true;
}

bool poll_status(Head& head) {
    bool answered = false;
    guarded(head, [&] { answered = read_status(head); });
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
        show_state_lamps(head, head.amplifier.read_itemAll(k_alarm_request));
    });
}

}  // namespace ampdesk
