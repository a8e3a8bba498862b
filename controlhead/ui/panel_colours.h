// Colours of the front panel: those of the settings as Qt colours, and the shades that the painted parts take
// from them.
#pragma once

#include <QColor>
#include <cstdint>

#include "controlhead/panel.h"

namespace ampdesk {

inline QColor colour_of(std::int32_t setting) {
    const std::uint32_t bgr = shown_colour(setting);
    return {static_cast<int>(bgr & 0xFF), static_cast<int>(bgr >> 8 & 0xFF),
            static_cast<int>(bgr >> 16 & 0xFF)};
}

// Part 0 gives `a`, 1 gives `b`; both colours opaque.
QColor mixed(const QColor& a, const QColor& b, double part);

// Dark or light, whichever reads better on that ground.
QColor ink_on(const QColor& ground);

// Yellow, red or green of a lit lamp; the system's button face for a dark one.
QColor lamp_colour(LampColour colour);

// The word that describes a lamp to a screen reader: "dark", "yellow", "red" or "green".
const char* lamp_word(LampColour colour);

}  // namespace ampdesk
