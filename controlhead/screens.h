// The screens of the head beside the four status screens: one file each, and one row of the table of
// sub-menus. A sub-menu takes a key argument: k_key_enter draws the first page, 1..5 are soft keys 0..4,
// k_key_refresh redraws the page in hand. All of them throw error 100 or Overflow; the caller's guard deals
// with it.
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

struct SubMenuRow {
    SubMenu number;
    std::int16_t screen;  // the status screen with the key that enters it; 0 for all of them
    std::int16_t key;     // soft key 0..3
    void (*attach)(Head& head, std::int16_t key);
    void (*scroll)(Head& head, int value) = nullptr;  // the operator has moved the scroll bar there
    void (*tick)(Head& head) = nullptr;               // at every display tick; without it the page stands
};

// Null for a number that no sub-menu has.
const SubMenuRow* sub_menu_row(std::int16_t number);

// The sub-menu behind a soft key of a status screen; null where there is none.
const SubMenuRow* sub_menu_behind(std::int16_t screen, std::int16_t key);

// setup_menu.cpp. An error while handling a key shows a box and leaves the menus; one at a refresh is
// thrown.
void attach_setup(Head& head, std::int16_t key);

// warning_menu.cpp. The bar runs upside down: its top is the last value.
void attach_warnings(Head& head, std::int16_t key);
void scroll_warnings(Head& head, int value);
void tick_warnings(Head& head);

// info_screen.cpp. An identity that cannot be read shows as "----" and is not thrown.
void attach_info(Head& head, std::int16_t key);

// event_screen.cpp. The bar's value is the number of the entry on the first line; one behind the last entry
// shows the last one. A page that could not be read is tried again by the next tick.
void attach_event(Head& head, std::int16_t key);
void scroll_events(Head& head, int value);
void tick_events(Head& head);

// help_screen.cpp. The bar's value is the index, from 0, of the section's line on line 1.
void attach_help(Head& head, std::int16_t key);
void scroll_help(Head& head, int value);

// attenuation.cpp. set_gain takes k_key_enter, k_key_leave, 0 to refresh, or a value + 1.
// set_attenuation takes every value 0..300, in tenths of a dB.
void set_gain(Head& head, std::int16_t key);
void set_attenuation(Head& head, std::int16_t value);
void assign_potValue(Head& head, int value);

}  // namespace ampdesk
