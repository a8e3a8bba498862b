#include "controlhead/ui/display_line.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "controlhead/ui/panel_colours.h"
#include "platform/qt/text.h"

namespace ampdesk {

namespace {
constexpr double k_largest_points = 15;
}

QFont display_font(double points) {
    QFont font(QStringLiteral("Courier New"));
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    font.setBold(true);
    font.setPointSizeF(points);
    return font;
}

QSize display_cell() {
    const QFontMetricsF metrics(display_font(k_largest_points));
    return {static_cast<int>(std::ceil(metrics.horizontalAdvance(u'M'))) + 2,
            static_cast<int>(std::ceil(metrics.height())) + 4};
}

DisplayLine::DisplayLine(int line, QWidget* parent) : QLabel(parent) {
    setObjectName(QStringLiteral("lblDisplayA(%1)").arg(line - 1));
    setAccessibleDescription(QStringLiteral("Display line %1").arg(line));
    setTextFormat(Qt::PlainText);
    const QSize cell = display_cell();
    setFixedSize(cell.width() * static_cast<int>(Panel::k_columns), cell.height());
}

void DisplayLine::show_text(const std::string& text) {
    if (text == shown_)
        return;
    shown_ = text;
    setText(from_latin1(text));
    setAccessibleName(this->text());
}

void DisplayLine::show_look(const ScreenSettings& look) {
    setFont(display_font(look.font_size));
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, colour_of(look.fore_colour));
    colours.setColor(QPalette::Window, colour_of(look.back_colour));
    setPalette(colours);
}

void DisplayLine::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor ink = palette().color(QPalette::WindowText);
    const QColor unlit = mixed(palette().color(QPalette::Window), ink, 0.07);
    QColor glow = ink;
    glow.setAlpha(45);

    const QFontMetricsF metrics(font());
    constexpr auto k_columns = static_cast<int>(Panel::k_columns);
    const int cell = width() / k_columns;
    const double baseline = (height() - metrics.height()) / 2 + metrics.ascent();
    const QString line = text();
    // A value too wide for its field makes the line longer than the display: condensed, it is seen whole.
    const int columns = std::max(k_columns, static_cast<int>(line.size()));
    painter.scale(static_cast<double>(k_columns) / columns, 1);
    for (int column = 0; column < columns; ++column) {
        const int left = column * cell;
        painter.fillRect(QRect(left, 1, cell - 1, height() - 2), unlit);
        if (column >= line.size() || line[column] == u' ')
            continue;
        const QString character = line.mid(column, 1);
        const double x = left + (cell - metrics.horizontalAdvance(character)) / 2;
        painter.setPen(glow);
        painter.drawText(QPointF(x - 1, baseline), character);
        painter.drawText(QPointF(x + 1, baseline), character);
        painter.setPen(ink);
        painter.drawText(QPointF(x, baseline), character);
    }
}

}  // namespace ampdesk
