// The rows of the four status screens.
#pragma once

#include "controlhead/head.h"

namespace ampdesk {

// Header and soft-key legend of the screen in hand; in attenuation mode no legend.
void draw_fixed_rows(Head& head);

// Header and legend with nothing in between: the keys mean what they say while values are lacking.
void draw_outline(Head& head);

// The analog block in hand moves the power gauge.
void show_gauge(Head& head);

}  // namespace ampdesk
