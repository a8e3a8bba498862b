// The screens of the head: one file each, and one row of the table of screens. A screen draws from the
// readings that the head holds; what it needs is read for it. How a new one is written: README.md, "How to
// write a screen".
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

// What a screen is drawn from beside the status, and so is read all the time while it is shown.
enum Needs : std::uint8_t { k_needs_nothing = 0, k_needs_analog = 1, k_needs_alarm = 2, k_needs_limits = 4 };

// What there is to know of a screen. Its file defines one, by a name of its own, and the table names it.
struct Screen {
    std::int16_t menu_ptr = 0;  // status screen 1..4
    SubMenu sub_menu = k_no_sub_menu;
    std::uint8_t needs = k_needs_nothing;

    // Rewrites the rows with live values from what is in hand, at every tick and reading; a row whose value
    // is not there is blank. Throws Overflow, with the row blank. Null: the page stands as it is.
    void (*draw)(Head& head) = nullptr;

    // What changes with time alone, at every display tick before it is drawn.
    void (*tick)(Head& head) = nullptr;

    // Of a sub-menu: takes a key argument. k_key_enter draws the first page, 1..5 are soft keys 0..4,
    // k_key_refresh draws the page in hand from scratch.
    void (*attach)(Head& head, std::int16_t key) = nullptr;
    std::int16_t from = 0;  // the status screen with the key that enters it; 0 for all of them
    std::int16_t key = 0;   // that soft key, 0..3

    // The operator has moved the scroll bar there.
    void (*scroll)(Head& head, int value) = nullptr;

    // What came of a request that the screen has made itself; a failed one after its second try, a guess at
    // once.
    void (*take)(Head& head, const Reading& reading) = nullptr;

    // What the soft keys do, where line 4 is no legend.
    const char* keys[4] = {};
};

// The screen that is shown, or comes back when shutdown or communication error screen go.
const Screen& screen_of(const Head& head);

// The sub-menu behind a soft key of a status screen; null where there is none.
const Screen* sub_menu_behind(std::int16_t screen, std::int16_t key);

// What soft key 0..3 does now: its legend, or in words; empty when there is nothing to say.
std::string key_name(const Head& head, int key);

// attenuation.cpp. set_gain takes k_key_enter, k_key_leave, 0 to refresh, or a value + 1.
// set_attenuation takes every value 0..300, in tenths of a dB.
void set_gain(Head& head, std::int16_t key);
void set_attenuation(Head& head, std::int16_t value);
void assign_potValue(Head& head, int value);

// An analog block has come: the bar goes where it was to follow the amplifier.
void place_bar(Head& head);

}  // namespace ampdesk
