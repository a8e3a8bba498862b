// What the menus open to set things up: a new amplifier, the bus line, the look of a control head.
#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "buslink/line_settings.h"
#include "controlhead/ui/frmMachine.h"
#include "platform/qt/qt_operator.h"
#include "station/talk.h"

namespace ampdesk {

class SetUp {
  public:
    // `window` is the main window, in front of which the dialogs stand. `models` are the site's own
    // designations for frmBand, which asks for a band in the operator's name until its end.
    SetUp(QWidget& window, PortMap ports, QtOperator& person, GaugeRange gauge,
          std::vector<std::string> models, std::function<void(const Act&)> send);
    ~SetUp();
    SetUp(const SetUp&) = delete;
    SetUp& operator=(const SetUp&) = delete;

    // Amplifier > New. They return when the dialog has closed.
    void new_amplifier();

    // Tools > Setup_422.
    void line();

    // Tools > Amplifier Setup > Screen Settings.
    void screen(const frmMachine& machine);

    void take(const SetupNotice& notice);

  private:
    template <class Dialog>
    void show(SetupKind kind);

    QWidget& window_;
    const PortMap ports_;
    QtOperator& operator_;
    const GaugeRange gauge_;
    const std::vector<std::string> models_;
    std::function<void(const Act&)> send_;
    BusSetup* open_ = nullptr;  // of the dialog that is open
};

}  // namespace ampdesk
