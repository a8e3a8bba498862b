#include "controlhead/ui/panel_key.h"

#include <QPainter>
#include <QPainterPath>

#include "controlhead/ui/panel_colours.h"

namespace ampdesk {

PanelKey::PanelKey(Kind kind, QSize size, QWidget* parent) : QPushButton(parent), kind_(kind) {
    setFixedSize(size);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
}

void PanelKey::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool down = isDown();

    // The well in the panel that the key sits in.
    const QRectF well = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QLinearGradient well_shade(well.topLeft(), well.bottomLeft());
    well_shade.setColorAt(0, QColor(0, 0, 0, 190));
    well_shade.setColorAt(1, QColor(0, 0, 0, 110));
    painter.setPen(QPen(QColor(255, 255, 255, 90), 1));
    painter.setBrush(well_shade);
    painter.drawRoundedRect(well, 5, 5);

    // The cap; pressed, it goes down by a pixel and loses its light edge.
    QColor face = kind_ == Kind::hard ? QColor(0x5A, 0x5F, 0x66) : QColor(0x3C, 0x40, 0x46);
    if (underMouse() && !down)
        face = face.lighter(112);
    if (down)
        face = face.darker(125);
    const QRectF cap = well.adjusted(2.5, down ? 3.5 : 2, -2.5, down ? -2 : -3.5);
    QLinearGradient cap_shade(cap.topLeft(), cap.bottomLeft());
    cap_shade.setColorAt(0, face.lighter(down ? 100 : 145));
    cap_shade.setColorAt(0.12, face.lighter(down ? 98 : 118));
    cap_shade.setColorAt(0.9, face.darker(112));
    cap_shade.setColorAt(1, face.darker(145));
    painter.setPen(QPen(QColor(0x14, 0x15, 0x17), 1));
    painter.setBrush(cap_shade);
    painter.drawRoundedRect(cap, 3.5, 3.5);

    if (hasFocus()) {
        painter.setPen(QPen(QColor(0x6E, 0xB4, 0xFF), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(cap.adjusted(1.5, 1.5, -1.5, -1.5), 2.5, 2.5);
    }
}

}  // namespace ampdesk
