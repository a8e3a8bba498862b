#include "shell/ui/program_icon.h"

#include <QPainter>
#include <QPixmap>

namespace ampdesk {

namespace {

// A small front panel: display with two lit lines, and a red and a green lamp.
QPixmap drawn(int size) {
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 32.0, size / 32.0);
    painter.setPen(QPen(QColor(0x4A, 0x50, 0x54), 1.5));
    painter.setBrush(QColor(0xC0, 0xC8, 0xC8));
    painter.drawRoundedRect(QRectF(1.5, 3.5, 29, 25), 4, 4);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x18, 0x20, 0x20));
    painter.drawRoundedRect(QRectF(5, 7, 22, 11), 1.5, 1.5);
    painter.setBrush(QColor(0x40, 0xFF, 0x40));
    painter.drawRect(QRectF(7, 9.5, 13, 2));
    painter.drawRect(QRectF(7, 13.5, 17, 2));
    painter.setBrush(QColor(0xE0, 0x18, 0x18));
    painter.drawEllipse(QPointF(11, 23), 3, 3);
    painter.setBrush(QColor(0x10, 0xB8, 0x28));
    painter.drawEllipse(QPointF(21, 23), 3, 3);
    return picture;
}

}  // namespace

QIcon program_icon() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128}) icon.addPixmap(drawn(size));
    return icon;
}

}  // namespace ampdesk
