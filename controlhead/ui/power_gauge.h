// The forward-power gauge, `Picture1`: a bar in dBm over a printed scale.
#pragma once

#include <QProgressBar>
#include <optional>

#include "controlhead/panel.h"

namespace ampdesk {

class PowerGauge : public QProgressBar {
    Q_OBJECT

  public:
    PowerGauge(GaugeRange range, QWidget* parent);

    // Nothing while the power is not known: the bar is empty.
    void show_power(std::optional<double> dbm);
    void show_machine_colour(const QColor& colour);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    void paint_scale(class QPainter& painter, const QRectF& bar) const;

    GaugeRange range_;
    std::optional<double> dbm_;
};

}  // namespace ampdesk
