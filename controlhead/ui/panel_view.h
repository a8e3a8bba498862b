// The front panel itself, `frameMachine`: display, keys, lamps, gauge and scroll bar in their places,
// painted from a Panel. It knows no control head, so a colour dialog can show one too.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QScrollBar>
#include <QWidget>
#include <array>

#include "controlhead/panel.h"
#include "controlhead/ui/display_line.h"
#include "controlhead/ui/lamp_button.h"
#include "controlhead/ui/panel_key.h"
#include "controlhead/ui/power_gauge.h"

namespace ampdesk {

// `VScroll1`: the wheel moves it only while it has the focus.
class PanelScrollBar : public QScrollBar {
    Q_OBJECT

  public:
    explicit PanelScrollBar(QWidget* parent);

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

class PanelView : public QWidget {
    Q_OBJECT

  public:
    PanelView(GaugeRange gauge, QWidget* parent);

    // Paints what differs from what is shown. The scroll bar follows without a signal; while the
    // operator holds it, or a move of his has not been told yet, its position is left alone, and so it
    // is when the panel is older than his last move.
    void show_panel(const Panel& panel, bool moves_known = true);

    PanelScrollBar& scroll_bar() { return *scroll_; }

  Q_SIGNALS:
    void key_clicked(int index);
    void hard_key_clicked(int index);
    void lamp_clicked(int index);
    void scroll_moved(int value);  // once for a burst of moves, from the event loop
    void scroll_shown(bool shown);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    void make_display();
    void make_soft_keys();
    void make_hard_keys();
    void make_gauge(GaugeRange gauge);
    void show_look(const ScreenSettings& look);
    void show_scroll(const ScrollBar& scroll, bool moves_known);
    void tell_scroll();

    std::array<DisplayLine*, 4> lblDisplayA_{};
    std::array<PanelKey*, 5> cmdKey_{};
    std::array<PanelKey*, 4> cmdHardkey_{};
    std::array<LampButton*, 8> picLight_{};
    std::array<QLabel*, 5> Label1_{};
    QFrame* Frame1_ = nullptr;
    PowerGauge* Picture1_ = nullptr;
    PanelScrollBar* scroll_ = nullptr;
    QRect bezel_;
    std::optional<ScreenSettings> look_;
    bool scroll_untold_ = false;
};

}  // namespace ampdesk
