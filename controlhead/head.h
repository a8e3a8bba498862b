// The state of one control head. The screens are free functions over it, one file a screen; see
// screens.h for how they hang together. Nothing here reads the amplifier: what a head wants to be read or set
// stands in it until the station has seen to it, and readings come in as they come.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
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

struct Head;

// Key arguments of the sub-menu procedures: 1..5 are soft keys 0..4.
inline constexpr std::int16_t k_key_refresh = 0;
inline constexpr std::int16_t k_key_exit = 5;
inline constexpr std::int16_t k_key_leave = 88;
inline constexpr std::int16_t k_key_enter = 99;

// A screen that is entered draws no value that is older.
inline constexpr std::chrono::seconds k_oldest_drawn{1};

enum class LinkKind { none = 0, rs485 = 1, modem = 2 };

struct HeadIdentity {
    int id = 0;    // never given again while the program runs
    int slot = 0;  // in the table of open amplifiers
    std::int16_t unit_address = 0;
    std::string number;  // the amplifier number in decimal
    std::string model;   // model text, for the band capability
};

// Of its window, and of what is told about it.
inline std::string caption(const HeadIdentity& identity) {
    return "JEX Amplifier " + identity.number;
}

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
    int reads_left = 0;           // of the check that is under way
};

struct AttenuationState {
    std::int16_t atten_value = 0;  // tenths of a dB
    bool alarm_blink = false;
    bool follow_amplifier = false;  // the bar goes to the value of the next analog block
};

struct SetupState {
    std::int16_t setup_page = 0;
    std::int16_t setup_page_count = 4;
    std::int16_t switch_mode = 0;  // 0 off, 1 manual, 2 auto
    std::int16_t mode_asked = 0;   // by the last key; the orders may still be waiting
    bool status_awaited = false;   // the page is drawn from it
};

struct WarningState {
    std::int16_t warn_page = 0;
    std::int16_t warn_page_count = 6;
    bool warn_editing = false;
    bool entered = false;  // the page still stands as it was drawn first
};

struct EventState {
    std::int16_t position = 0;  // number of the entry on the first line
    int target = 0;             // of the page that is being read
    std::vector<std::string> page;
    int missing = 256;      // no entry from here on
    int there = -1;         // the search for the end of the log stands between this entry, which is there …
    int searched_from = 0;  // … and `missing`; 0 while there is no search
    bool event_refresh = false;  // to be read once more by the next display tick
};

struct HelpState {
    std::vector<std::string> lines;  // 20 characters each, 100 at most
    std::int16_t help_line_count = 0;
    std::int16_t position = 0;  // index of the stored line on the first display line
};

// A setting on its way to the amplifier.
struct Order {
    std::string command;  // see commands.h
    // What the head does about it, once it is known what has become of it.
    std::function<void(Head&, const Setting&)> then{};
    Instant made_at{};
    const char* key = nullptr;  // the hard key, for what is said of it
    bool only_fresh = false;    // an On-key that has waited too long is not carried out any more
    bool urgent = false;        // an Off-key: no other wait is in its way
    bool replaceable = false;   // by a later one of its kind that follows it: a move of the scroll bar
};

struct Head {
    Head(HeadServices& head_services, HeadIdentity head_identity)
        : services(head_services), identity(std::move(head_identity)) {}
    Head(const Head&) = delete;
    Head& operator=(const Head&) = delete;

    // Tells the operator. ControlHead keeps it until the handler has returned; alone, a head tells at once.
    void tell(const std::string& text, const std::string& detail = {}) const {
        if (on_tell)
            on_tell(text, detail);
        else
            services.person.notify(text, detail);
    }
    std::function<void(const std::string& text, const std::string& detail)> on_tell;

    HeadServices& services;
    HeadIdentity identity;

    // What is to go over the line for this head.
    std::deque<Order> orders;  // in the order of the keys
    // Made now unless it says otherwise.
    void order(Order order) {
        if (order.made_at == Instant{})
            order.made_at = services.clock.now();
        orders.push_back(std::move(order));
    }
    std::deque<Request> requests;  // reads beside those that the screen needs all the time
    void want(const Request& request) {
        if (!wants(request))
            requests.push_back(request);
    }
    bool wants(const Request& request) const {
        return std::find(requests.begin(), requests.end(), request) != requests.end();
    }

    Panel panel;
    FaultLog faults;

    // Menu position.
    std::int16_t menu_ptr = 0;    // status screen 1..4; 0 while a sub-menu owns the display
    std::int16_t menu_saved = 0;  // menu_ptr when the sub-menu was entered
    std::int16_t sub_menu = k_no_sub_menu;
    bool gain_mode = false;  // the attenuation adjustment owns the display
    char left_marker = '[';
    char right_marker = ']';

    // The last reply of each kind. What may not be shown as live any more is let go of.
    Status status;
    std::optional<Analog> analog;
    std::optional<Limits> limits;
    std::optional<AlarmState> alarm;
    Instant status_at{};
    Instant analog_at{};
    Instant limits_at{};
    Instant alarm_at{};
    std::int16_t last_command_status = 0;

    // What the ticks keep.
    std::int16_t link_fail_count = 0;  // requests in a row that failed after their second try
    std::int16_t overflow_count = 0;   // ticks in a row that could not draw a value
    bool key_activity = false;         // a key was pressed since the last tick
    bool redraw_request = false;       // to draw from scratch; locks no key
    bool comm_error_shown = false;
    std::optional<ToldError> told_error;  // until a tick meets none
    bool shutdown_shown = false;          // this shutdown is on the display and locks the keys
    bool acknowledging = false;           // the OK is on its way: a second one would meet what comes then
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
