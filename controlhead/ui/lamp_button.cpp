#include "controlhead/ui/lamp_button.h"

#include <QPainter>

#include "controlhead/ui/panel_colours.h"

namespace ampdesk {

LampButton::LampButton(int lamp, QWidget* parent) : QPushButton(parent) {
    setObjectName(QStringLiteral("picLight(%1)").arg(lamp - 1));
    setAccessibleName(QStringLiteral("Lamp %1").arg(lamp));
    setAccessibleDescription(QLatin1String(lamp_word(colour_)));
    setFixedSize(k_size, k_size);
    setFocusPolicy(Qt::NoFocus);  // each lamp does what a key beside it does
}

void LampButton::show_colour(LampColour colour) {
    if (colour == colour_)
        return;
    colour_ = colour;
    setAccessibleDescription(QLatin1String(lamp_word(colour)));
    update();
}

void LampButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QPointF middle = QRectF(rect()).center();
    const bool lit = colour_ != LampColour::dark;
    const QColor colour = lamp_colour(colour_);

    if (lit) {
        QRadialGradient glow(middle, k_size / 2.0);
        QColor near = colour;
        near.setAlpha(170);
        QColor far = colour;
        far.setAlpha(0);
        glow.setColorAt(0.5, near);
        glow.setColorAt(1, far);
        painter.setBrush(glow);
        painter.drawEllipse(middle, k_size / 2.0, k_size / 2.0);
    }

    QLinearGradient ring(middle - QPointF(0, 8.5), middle + QPointF(0, 8.5));
    ring.setColorAt(0, QColor(0x2A, 0x2C, 0x2E));
    ring.setColorAt(1, QColor(0xA8, 0xAA, 0xAC));
    painter.setBrush(ring);
    painter.drawEllipse(middle, 8.5, 8.5);
    painter.setBrush(QColor(0x18, 0x19, 0x1A));
    painter.drawEllipse(middle, 7.2, 7.2);

    QRadialGradient lens(middle, 6.6, middle - QPointF(1.8, 2.2));
    if (lit) {
        lens.setColorAt(0, mixed(colour, Qt::white, 0.75));
        lens.setColorAt(0.45, colour);
        lens.setColorAt(1, colour.darker(150));
    } else {
        lens.setColorAt(0, colour.lighter(104));
        lens.setColorAt(0.5, colour.darker(125));
        lens.setColorAt(1, colour.darker(185));
    }
    painter.setBrush(lens);
    painter.drawEllipse(middle, 6.6, 6.6);
}

}  // namespace ampdesk
