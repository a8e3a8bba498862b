#include "controlhead/ui/power_gauge.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "controlhead/ui/panel_colours.h"

namespace ampdesk {

namespace {

constexpr int k_segments = 30;
constexpr int k_bar_height = 18;
constexpr int k_side = 12;  // room for half of the outer figures of the scale

}  // namespace

PowerGauge::PowerGauge(GaugeRange range, QWidget* parent) : QProgressBar(parent), range_(range) {
    setObjectName(QStringLiteral("Picture1"));
    setAccessibleName(QStringLiteral("Power gauge"));
    setAccessibleDescription(QStringLiteral("no value"));
    setTextVisible(false);
    setRange(qRound(range.minimum), qRound(range.maximum));
    QFont small(QStringLiteral("Arial"));
    small.setPixelSize(10);
    setFont(small);
}

void PowerGauge::show_power(std::optional<double> dbm) {
    if (dbm == dbm_)
        return;
    dbm_ = dbm;
    if (dbm) {
        const QString text = QStringLiteral("%1 dBm").arg(*dbm, 0, 'f', 1);
        setValue(std::clamp(qRound(*dbm), minimum(), maximum()));
        setToolTip(text);
        setAccessibleDescription(text);
    } else {
        reset();
        setToolTip({});
        setAccessibleDescription(QStringLiteral("no value"));
    }
    update();
}

void PowerGauge::show_machine_colour(const QColor& colour) {
    QPalette colours = palette();
    colours.setColor(QPalette::Window, colour);
    colours.setColor(QPalette::WindowText, ink_on(colour));
    setPalette(colours);
}

void PowerGauge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF well(k_side - 4, 0.5, width() - 2 * k_side + 8, k_bar_height);
    painter.setPen(QPen(QColor(255, 255, 255, 90), 1));
    painter.setBrush(QColor(0x16, 0x18, 0x19));
    painter.drawRoundedRect(well, 3, 3);

    const QRectF bar(k_side, 4, width() - 2 * k_side, k_bar_height - 7);
    const double share = dbm_ ? (*dbm_ - range_.minimum) / (range_.maximum - range_.minimum) : 0;
    const auto lit = std::lround(std::clamp(share, 0.0, 1.0) * k_segments);
    const double step = bar.width() / k_segments;
    for (int i = 0; i < k_segments; ++i) {
        const QColor colour = i < lit ? QColor(0x4C, 0xF0, 0x7A) : QColor(0x2A, 0x33, 0x2E);
        painter.fillRect(QRectF(bar.left() + i * step, bar.top(), step - 1.5, bar.height()), colour);
    }
    paint_scale(painter, bar);
}

void PowerGauge::paint_scale(QPainter& painter, const QRectF& bar) const {
    painter.setPen(palette().color(QPalette::WindowText));
    constexpr int k_marks = 6;
    const double top = k_bar_height + 2.0;
    for (int i = 0; i <= k_marks; ++i) {
        const double x = bar.left() + bar.width() * i / k_marks;
        const bool main = i % 2 == 0;
        painter.drawLine(QPointF(x, top), QPointF(x, top + (main ? 5 : 3)));
        if (!main)
            continue;
        const double value = range_.minimum + (range_.maximum - range_.minimum) * i / k_marks;
        painter.drawText(QRectF(x - 20, top + 5, 40, 13), Qt::AlignHCenter | Qt::AlignTop,
                         QString::number(value, 'f', value == std::round(value) ? 0 : 1));
    }
}

}  // namespace ampdesk
