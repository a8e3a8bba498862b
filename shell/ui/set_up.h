// What the menus open to set things up: a new amplifier, the bus line, the look of a control head.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "controlhead/ui/power_gauge.h"
#include "platform/qt/qt_operator.h"
#include "station/setups.h"
#include "station/station.h"

namespace ampdesk {

class SetUp {
  public:
    // `window` is the main window, in front of which the dialogs stand. `models` are the site's own
    // designations for frmBand, which asks for a band in the operator's name until its end.
    SetUp(QWidget& window, Station& station, BusLink& bus, QtOperator& person, GaugeRange gauge,
          std::vector<std::string> models);
    ~SetUp();
    SetUp(const SetUp&) = delete;
    SetUp& operator=(const SetUp&) = delete;

    // Amplifier > New: opens a control head when the dialog found an amplifier, else the bus line is
    // again as it was.
    void new_amplifier();

    // Tools > Setup_422. A line that was open is open afterwards too, as it was when the new settings
    // did not open.
    void line();

    // Tools > Amplifier Setup > Screen Settings.
    void screen(const std::shared_ptr<ControlHead>& head);

    // A dialog has something for the station to do.
    std::function<void()> line_wanted;

    // The bus line was set up by Setup_422.
    bool rs422_mode() const { return line_setup_.rs422_mode(); }

  private:
    QWidget& window_;
    Station& station_;
    BusLink& bus_;
    QtOperator& operator_;
    GaugeRange gauge_;
    std::vector<std::string> models_;
    LineSetup line_setup_;
};

}  // namespace ampdesk
