// The rows of the four status screens.
#pragma once

#include "controlhead/head.h"

namespace ampdesk {

// Reads the analog block and moves the power gauge with it. Throws error 100.
void read_analog(Head& head);

// Reads state and alarm. Throws error 100.
void read_alarm_state(Head& head);

// Header and soft-key legend of the screen in hand; in attenuation mode no legend.
void draw_fixed_rows(Head& head);

// The rows with live values, from the analog block in hand. Throws error 100 or Overflow.
void draw_value_rows(Head& head);

// Header and legend with nothing in between: the keys mean what they say while values are lacking.
void draw_outline(Head& head);

}  // namespace ampdesk
