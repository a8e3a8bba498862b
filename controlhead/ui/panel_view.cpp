#include "controlhead/ui/panel_view.h"

#include <QPainter>
#include <QSignalBlocker>
#include <QWheelEvent>

#include "controlhead/ui/panel_colours.h"
#include "controlhead/ui/panel_interface.h"
#include "platform/qt/text.h"

namespace ampdesk {

namespace {

// The panel's plan, in pixels. The display decides the width, as its cells follow the font.
constexpr int k_margin = 22;
constexpr int k_top = 40;  // below the engraved title
constexpr int k_bezel = 8;
constexpr QMargins k_glass_padding(12, 10, 12, 10);
constexpr int k_scroll_width = 18;
constexpr QSize k_hard_key(60, 40);
constexpr int k_soft_key_height = 36;
constexpr int k_label_height = 16;
constexpr int k_hard_row = LampButton::k_size + k_hard_key.height() + k_label_height + 6;
constexpr int k_gauge_height = 38;
constexpr int k_column_gap = 14;

constexpr std::array<const char*, 4> k_hard_names = {"HV On", "HV Off", "RF On", "RF Off"};

}  // namespace

PanelScrollBar::PanelScrollBar(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {
    setObjectName(QStringLiteral("VScroll1"));
    setAccessibleName(QStringLiteral("Scroll"));
    setFocusPolicy(Qt::StrongFocus);
    setTracking(false);  // a drag is told once, when it ends
    hide();
}

void PanelScrollBar::wheelEvent(QWheelEvent* event) {
    if (hasFocus())
        QScrollBar::wheelEvent(event);
    else
        event->ignore();
}

PanelView::PanelView(GaugeRange gauge, QWidget* parent) : QWidget(parent) {
    QAccessible::installFactory(PanelInterface::make);  // a second time does nothing
    setObjectName(QStringLiteral("frameMachine"));
    make_display();
    make_soft_keys();
    make_hard_keys();
    make_gauge(gauge);
    scroll_ = new PanelScrollBar(this);
    scroll_->setGeometry(bezel_.right() + 7, bezel_.top(), k_scroll_width, bezel_.height());
    connect(scroll_, &QScrollBar::valueChanged, this, [this] {
        if (scroll_untold_)
            return;
        scroll_untold_ = true;
        QMetaObject::invokeMethod(this, &PanelView::tell_scroll, Qt::QueuedConnection);
    });
    const int bottom = std::max(picLight_[0]->geometry().bottom(), Picture1_->geometry().bottom());
    setFixedSize(cmdHardkey_[3]->geometry().right() + 1 + k_margin, bottom + 14);
    show_look({});
}

void PanelView::make_display() {
    const QSize cell = display_cell();
    const QSize text(cell.width() * static_cast<int>(Panel::k_columns), cell.height() * 4);
    Frame1_ = new QFrame(this);
    Frame1_->setObjectName(QStringLiteral("Frame1"));
    Frame1_->setAutoFillBackground(true);
    Frame1_->setGeometry(QRect(QPoint(k_margin + k_bezel, k_top + k_bezel), text.grownBy(k_glass_padding)));
    bezel_ = Frame1_->geometry().adjusted(-k_bezel, -k_bezel, k_bezel, k_bezel);
    for (int i = 0; i < 4; ++i) {
        auto* line = new DisplayLine(i + 1, Frame1_);
        line->move(k_glass_padding.left(), k_glass_padding.top() + i * cell.height());
        line->show_text(std::string(Panel::k_columns, ' '));
        lblDisplayA_[static_cast<std::size_t>(i)] = line;
    }
}

void PanelView::make_soft_keys() {
    // Each key lies under its five columns of line 4.
    const int field = display_cell().width() * 5;
    const int top = bezel_.bottom() + 9;
    for (int i = 0; i < 4; ++i) {
        auto* key = new PanelKey(PanelKey::Kind::soft, {field - 8, k_soft_key_height}, this);
        key->setObjectName(QStringLiteral("cmdKey(%1)").arg(i));
        key->setAccessibleDescription(QStringLiteral("Soft key %1").arg(i + 1));
        const int left = Frame1_->x() + k_glass_padding.left() + i * field;
        key->move(left + 4, top);
        connect(key, &QPushButton::clicked, this, [this, i] { Q_EMIT key_clicked(i); });
        cmdKey_[static_cast<std::size_t>(i)] = key;

        auto* lamp = new LampButton(i + 1, this);
        lamp->move(left + (field - LampButton::k_size) / 2, top + k_soft_key_height + 2);
        connect(lamp, &QPushButton::clicked, this, [this, i] { Q_EMIT lamp_clicked(i); });
        picLight_[static_cast<std::size_t>(i)] = lamp;
    }
}

void PanelView::make_hard_keys() {
    const auto make_label = [this](int index, const char* text, QPoint place) {
        auto* label = new QLabel(QLatin1String(text), this);
        label->setObjectName(QStringLiteral("Label1(%1)").arg(index));
        QFont font(QStringLiteral("Arial"));
        font.setPixelSize(11);
        font.setBold(true);
        label->setFont(font);
        label->setAlignment(Qt::AlignCenter);
        label->setGeometry(QRect(place, QSize(k_hard_key.width(), k_label_height)));
        Label1_[static_cast<std::size_t>(index)] = label;
    };
    const int left = bezel_.right() + 7 + k_scroll_width + k_column_gap;
    const int step = k_hard_key.width() + k_column_gap;
    const int top = bezel_.top() - 12;

    // EXIT stands beside the lower row, under its label.
    const int exit_key_top = top + k_hard_row + LampButton::k_size;
    make_label(4, "EXIT", {left, exit_key_top - k_label_height - 1});
    auto* exit_key = new PanelKey(PanelKey::Kind::exit, k_hard_key, this);
    exit_key->setObjectName(QStringLiteral("cmdKey(4)"));
    exit_key->setAccessibleName(QStringLiteral("EXIT"));
    exit_key->setAccessibleDescription(QStringLiteral("Exit key"));
    exit_key->move(left, exit_key_top);
    connect(exit_key, &QPushButton::clicked, this, [this] { Q_EMIT key_clicked(4); });
    cmdKey_[4] = exit_key;

    for (int i = 0; i < 4; ++i) {
        const int column = i / 2;
        const int row = i % 2;
        const QPoint place(left + (column + 1) * step, top + row * k_hard_row);

        auto* key = new PanelKey(PanelKey::Kind::hard, k_hard_key, this);
        key->setObjectName(QStringLiteral("cmdHardkey(%1)").arg(i));
        key->setAccessibleName(QLatin1String(k_hard_names[static_cast<std::size_t>(i)]));
        key->setAccessibleDescription(QStringLiteral("Hard key"));
        key->move(place + QPoint(0, LampButton::k_size));
        connect(key, &QPushButton::clicked, this, [this, i] { Q_EMIT hard_key_clicked(i); });
        cmdHardkey_[static_cast<std::size_t>(i)] = key;

        auto* lamp = new LampButton(i + 5, this);
        lamp->move(place + QPoint((k_hard_key.width() - LampButton::k_size) / 2, 0));
        connect(lamp, &QPushButton::clicked, this, [this, i] { Q_EMIT lamp_clicked(i + 4); });
        picLight_[static_cast<std::size_t>(i) + 4] = lamp;

        // The labels count row by row: "HV On", "RF On", "HV Off", "RF Off".
        make_label(row * 2 + column, k_hard_names[static_cast<std::size_t>(i)],
                   place + QPoint(0, LampButton::k_size + k_hard_key.height() + 1));
    }
}

void PanelView::make_gauge(GaugeRange gauge) {
    Picture1_ = new PowerGauge(gauge, this);
    const int right = cmdHardkey_[3]->geometry().right();
    const int left = cmdKey_[4]->x();
    Picture1_->setGeometry(left, cmdHardkey_[1]->geometry().bottom() + k_label_height + 24, right - left + 1,
                           k_gauge_height);
}

void PanelView::show_panel(const Panel& panel, bool moves_known) {
    if (panel.look() != look_)
        show_look(panel.look());
    for (int i = 0; i < 4; ++i) {
        lblDisplayA_[static_cast<std::size_t>(i)]->show_text(panel.line(i + 1));
        QString name = from_latin1(panel.key_name(i));
        if (name.isEmpty())
            name = QStringLiteral("Key %1").arg(i + 1);
        auto* key = cmdKey_[static_cast<std::size_t>(i)];
        if (key->accessibleName() != name)
            key->setAccessibleName(name);
    }
    for (int i = 0; i < 8; ++i) picLight_[static_cast<std::size_t>(i)]->show_colour(panel.lamp(i + 1));
    Picture1_->show_power(panel.gauge());
    show_scroll(panel.scroll(), moves_known);
}

void PanelView::show_look(const ScreenSettings& look) {
    look_ = look;
    for (DisplayLine* line : lblDisplayA_) line->show_look(look);
    QPalette glass = Frame1_->palette();
    glass.setColor(QPalette::Window, colour_of(look.back_colour));
    Frame1_->setPalette(glass);

    const QColor machine = colour_of(look.machine_colour);
    Picture1_->show_machine_colour(machine);
    QPalette print = Label1_[0]->palette();
    print.setColor(QPalette::Window, machine);
    print.setColor(QPalette::WindowText, ink_on(machine));
    for (QLabel* label : Label1_) label->setPalette(print);
    update();
}

void PanelView::show_scroll(const ScrollBar& scroll, bool moves_known) {
    const bool held = scroll_->isSliderDown() || scroll_untold_ || !moves_known;
    {
        const QSignalBlocker quiet(scroll_);
        if (scroll_->minimum() != scroll.minimum || scroll_->maximum() != scroll.maximum) {
            scroll_->setRange(scroll.minimum, scroll.maximum);
            scroll_->setPageStep(std::max(1, (scroll.maximum - scroll.minimum) / 10));
        }
        if (!held && scroll_->value() != scroll.value)
            scroll_->setValue(scroll.value);
    }
    if (scroll_->isHidden() != scroll.visible)
        return;
    if (!scroll.visible && scroll_->hasFocus())
        cmdKey_[0]->setFocus();
    if (!scroll.visible)
        scroll_->setSliderDown(false);  // it does not see a button let go any more
    scroll_->setVisible(scroll.visible);
    Q_EMIT scroll_shown(scroll.visible);
}

void PanelView::tell_scroll() {
    scroll_untold_ = false;
    if (!scroll_->isHidden())
        Q_EMIT scroll_moved(scroll_->value());
}

void PanelView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRegion(event->region());
    const QColor machine = colour_of(look_->machine_colour);
    const QColor ink = ink_on(machine);

    // The plate.
    const QRectF plate = QRectF(rect()).adjusted(1, 1, -1, -1);
    QLinearGradient shade(plate.topLeft(), plate.bottomLeft());
    shade.setColorAt(0, mixed(machine, Qt::white, 0.28));
    shade.setColorAt(0.04, mixed(machine, Qt::white, 0.08));
    shade.setColorAt(0.96, mixed(machine, Qt::black, 0.07));
    shade.setColorAt(1, mixed(machine, Qt::black, 0.25));
    painter.setPen(QPen(mixed(machine, Qt::black, 0.5), 1));
    painter.setBrush(shade);
    painter.drawRoundedRect(plate, 7, 7);

    // Screws in the corners.
    for (const QPointF corner :
         {plate.topLeft(), plate.topRight(), plate.bottomLeft(), plate.bottomRight()}) {
        const QPointF inward(corner.x() < width() / 2.0 ? 10 : -10, corner.y() < height() / 2.0 ? 10 : -10);
        const QPointF middle = corner + inward;
        QLinearGradient metal(middle - QPointF(0, 4.5), middle + QPointF(0, 4.5));
        metal.setColorAt(0, QColor(0xE4, 0xE4, 0xE2));
        metal.setColorAt(1, QColor(0x84, 0x86, 0x88));
        painter.setPen(QPen(QColor(0, 0, 0, 120), 0.8));
        painter.setBrush(metal);
        painter.drawEllipse(middle, 4.5, 4.5);
        painter.setPen(QPen(QColor(0x3A, 0x3C, 0x3E), 1.4));
        painter.drawLine(middle - QPointF(2.4, 1.6), middle + QPointF(2.4, 1.6));
    }

    // Engraved words: a light edge below dark letters.
    const auto engrave = [&](const QRectF& place, int flags, int pixels, const QString& text) {
        QFont font(QStringLiteral("Arial"));
        font.setPixelSize(pixels);
        font.setBold(true);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 1.2);
        painter.setFont(font);
        painter.setPen(mixed(machine, Qt::white, 0.55));
        painter.drawText(place.translated(0, 1), flags, text);
        painter.setPen(ink);
        painter.drawText(place, flags, text);
    };
    const QRectF title(bezel_.left() + 2, 10, bezel_.width(), k_top - 16);
    engrave(title, Qt::AlignLeft | Qt::AlignVCenter, 15, QStringLiteral("JEX"));
    engrave(title, Qt::AlignRight | Qt::AlignVCenter, 10, QStringLiteral("REMOTE TERMINAL"));
    engrave(QRectF(Picture1_->x(), Picture1_->y() - 15, Picture1_->width(), 14),
            Qt::AlignHCenter | Qt::AlignVCenter, 10, QStringLiteral("POWER  dBm"));

    // The bezel around the display glass.
    QLinearGradient rim(bezel_.topLeft(), bezel_.bottomLeft());
    rim.setColorAt(0, QColor(0x0C, 0x0D, 0x0E));
    rim.setColorAt(0.5, QColor(0x26, 0x28, 0x2A));
    rim.setColorAt(1, QColor(0x3A, 0x3D, 0x40));
    painter.setPen(QPen(QColor(255, 255, 255, 110), 1));
    painter.setBrush(rim);
    painter.drawRoundedRect(QRectF(bezel_).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
}

}  // namespace ampdesk
