// Tools > Make A Fault: one dialog, which speaks to the station of the amplifier that is active.
#pragma once

#include <QPointer>
#include <functional>
#include <optional>

#include "demo/ui/frmFault.h"
#include "station/simulator_talk.h"

namespace ampdesk {

class FaultWindow {
  public:
    // `window` is the main window, in front of which the dialog stands.
    FaultWindow(QWidget& window, std::function<void(const SimulatorAct&)> send)
        : window_(window), send_(std::move(send)) {}
    ~FaultWindow() { delete dialog_.data(); }
    FaultWindow(const FaultWindow&) = delete;
    FaultWindow& operator=(const FaultWindow&) = delete;

    // Made when it is first asked for.
    void open(int unit_address);

    // Another amplifier has become the active one, or none is open any more.
    void follow(std::optional<int> unit_address);

    void take(const SimulatorNotice& notice);

  private:
    QWidget& window_;
    std::function<void(const SimulatorAct&)> send_;
    QPointer<demo::frmFault> dialog_;
};

}  // namespace ampdesk
