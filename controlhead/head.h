// The state of one control head. The screens are free functions over it, one file a screen; see
// menu_engine.h for how they hang together.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "amplifier/amplifier.h"
#include "controlhead/fault_log.h"
#include "controlhead/panel.h"
#include "controlhead/services.h"

namespace ampdesk {

// Which sub-menu owns the display.
enum SubMenu : std::int16_t {
    k_no_sub_menu = 0,
    k_help_pages = 1,
    k_setup_menus = 2,
    k_warning_levels = 3,
    k_information = 4,
    k_event_list = 5,
};

// Key arguments of the sub-menu procedures: 1..5 are soft keys 0..4.
inline constexpr std::int16_t k_key_refresh = 0;
inline constexpr std::int16_t k_key_exit = 5;
inline constexpr std::int16_t k_key_leave = 88;
inline constexpr std::int16_t k_key_enter = 99;

enum class LinkKind { none = 0, rs485 = 1, modem = 2 };

struct HeadIdentity {
    int slot = 0;
    std::int16_t unit_address = 0;
    std::string number;  // the amplifier number in decimal
    std::string model;   // model text, for the band capability
};

// An error that the operator has been told of, and the screen it came up on.
struct ToldError {
    std::int16_t menu_ptr = 0;
    std::int16_t sub_menu = 0;
    std::string text;
    std::string detail;
    bool operator==(const ToldError&) const = default;
};

struct BandState {
    std::string band_reply;
    std::string band_name;
    std::string fwd_label = "Fwd Power  ";
    std::int16_t band_count = 0;  // capability 0..4
    std::int16_t band_index = 0;  // 0, 1 or 2
};

struct AttenuationState {
    std::int16_t atten_value = 0;  // tenths of a dB
    bool alarm_blink = false;
};

struct SetupState {
    std::int16_t setup_page = 0;
    std::int16_t setup_page_count = 4;
    std::int16_t switch_mode = 0;  // 0 off, 1 manual, 2 auto
};

struct WarningState {
    std::int16_t warn_page = 0;
    std::int16_t warn_page_count = 6;
    bool warn_editing = false;
};

struct EventState {
    std::int16_t position = 0;   // number of the entry on the first line
    bool event_refresh = false;  // to be read once more by the next display tick
};

struct HelpState {
    std::vector<std::string> lines;  // 20 characters each, 100 at most
    std::int16_t help_line_count = 0;
    std::int16_t position = 0;  // index of the stored line on the first display line
};

struct Head {
    Head(HeadServices& head_services, HeadIdentity head_identity)
        : services(head_services),
          identity(std::move(head_identity)),
          amplifier(services.bus, identity.unit_address, services.options.negative_words) {
        amplifier.on_refusal = [this](const std::string& text) { tell(text); };
    }
    Head(const Head&) = delete;
    Head& operator=(const Head&) = delete;

    // Tells the operator. A box never opens within a handler: the head would not be visited for as long
    // as it stands. ControlHead opens it afterwards; alone, a head opens it at once.
    void tell(const std::string& text, const std::string& detail = {}) const {
        if (on_tell)
            on_tell(text, detail);
        else
            services.person.notify(text, detail);
    }
    std::function<void(const std::string& text, const std::string& detail)> on_tell;

    HeadServices& services;
    HeadIdentity identity;
    Amplifier amplifier;

    Panel panel;
    FaultLog faults;

    // Menu position.
    std::int16_t menu_ptr = 0;    // status screen 1..4; 0 while a sub-menu owns the display
    std::int16_t menu_saved = 0;  // menu_ptr when the sub-menu was entered
    std::int16_t sub_menu = k_no_sub_menu;
    bool gain_mode = false;  // the attenuation adjustment owns the display
    char left_marker = '[';
    char right_marker = ']';

    // The last reply of each kind.
    Status status;
    Analog analog;
    Limits limits;
    AlarmState alarm;
    std::int16_t last_command_status = 0;

    // Requests to the next display tick, and what the ticks keep.
    std::int16_t link_fail_count = 0;
    bool key_activity = false;
    bool redraw_request = false;  // to draw from scratch; locks no key
    bool comm_error_shown = false;
    std::optional<ToldError> told_error;  // until a tick meets none
    std::int16_t page_misses = 0;         // visits in a row that could not draw a page over that screen
    bool shutdown_shown = false;          // this shutdown is on the display and locks the keys
    bool first_draw = true;               // no status screen has been drawn yet
    LinkKind link_kind = LinkKind::none;
    double last_beep_time = -86400;  // seconds since midnight when the alarm beep ended last

    // What each screen keeps for itself between two keys.
    BandState band;
    AttenuationState attenuation;
    SetupState setup;
    WarningState warnings;
    EventState events;
    HelpState help;
};

// As its last status reply has it.
inline bool in_shutdown(const Head& head) {
    return head.status.in_shutdown;
}

}  // namespace ampdesk
