// What the keys, lamps and scroll bar of the panel do, and the display tick.
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

// Soft key 0..3 or EXIT, 4.
void cmdKey_Click(Head& head, std::int16_t index);

// 0 HV On, 1 HV Off, 2 RF On, 3 RF Off; pressed just now unless told when.
void cmdHardkey_Click(Head& head, std::int16_t index, Instant pressed_at = {});

// Lamp 0..3 acts as that soft key, 4..7 as hard key 0..3; other numbers do nothing.
void picLight_Click(Head& head, std::int16_t index, Instant pressed_at = {});

// The scroll bar stands at a new value.
void VScroll1_Change(Head& head, int value);

// Something has become of an order of this head.
void take_setting(Head& head, const Order& order, const Setting& setting);

// One display tick: alarm beep, blinking markers, the screen drawn from what is in hand. Errors end in
// Error_handler_local.
void updateDisplay(Head& head);

// Puts the panel into its first state: lines empty, lamps dark, scroll bar hidden.
void Form_Load(Head& head);

}  // namespace ampdesk
