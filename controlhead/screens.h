// The sub-menus of the head. Each takes a key argument: k_key_enter draws the first page, 1..5 are
// soft keys 0..4, k_key_refresh redraws the page in hand. Scroll positions have a way of their own.
// All of them throw error 100 or Overflow; the caller's guard deals with it.
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

// setup_menu.cpp. An error while handling a key shows a box and leaves the menus; one at a refresh is
// thrown.
void attach_setup(Head& head, std::int16_t key);

// warning_menu.cpp. The scroll argument is the page number from 1, top to bottom.
void attach_warnings(Head& head, std::int16_t key);
void scroll_warnings(Head& head, std::int16_t page_from_one);

// info_screen.cpp. An identity that cannot be read shows as "----" and is not thrown.
void attach_info(Head& head, std::int16_t key);

// event_screen.cpp. The scroll argument is the number of the entry on the first line;
// a position behind the last entry shows the last one. A failed read sets event_refresh.
void attach_event(Head& head, std::int16_t key);
void scroll_events(Head& head, std::int16_t first_entry);

// help_screen.cpp. The scroll argument is the index, from 0, of the section's line on line 1.
void attach_help(Head& head, std::int16_t key);
void scroll_help(Head& head, std::int16_t first_line);

// attenuation.cpp. set_gain takes k_key_enter, k_key_leave, 0 to refresh, or a value + 1.
// set_attenuation takes every value 0..300, in tenths of a dB.
void set_gain(Head& head, std::int16_t key);
void set_attenuation(Head& head, std::int16_t value);
void assign_potValue(Head& head, int value);

}  // namespace ampdesk
