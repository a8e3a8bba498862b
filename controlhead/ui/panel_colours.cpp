#include "controlhead/ui/panel_colours.h"

#include <QGuiApplication>
#include <QPalette>

namespace ampdesk {

QColor mixed(const QColor& a, const QColor& b, double part) {
    const auto between = [part](int from, int to) { return from + qRound((to - from) * part); };
    return {between(a.red(), b.red()), between(a.green(), b.green()), between(a.blue(), b.blue())};
}

QColor ink_on(const QColor& ground) {
    return qGray(ground.rgb()) > 110 ? QColor(0x22, 0x24, 0x26) : QColor(0xEE, 0xEE, 0xEA);
}

QColor lamp_colour(LampColour colour) {
    switch (colour) {
        case LampColour::yellow:
            return {255, 255, 0};
        case LampColour::red:
            return {255, 0, 0};
        case LampColour::green:
            return {0, 255, 0};
        case LampColour::dark:
            break;
    }
    return QGuiApplication::palette().color(QPalette::Button);
}

const char* lamp_word(LampColour colour) {
    switch (colour) {
        case LampColour::yellow:
            return "yellow";
        case LampColour::red:
            return "red";
        case LampColour::green:
            return "green";
        case LampColour::dark:
            break;
    }
    return "dark";
}

}  // namespace ampdesk
