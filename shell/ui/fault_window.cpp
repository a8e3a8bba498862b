#include "shell/ui/fault_window.h"

namespace ampdesk {

namespace {

demo::FaultView view_of(const notice::SimulatedFaults& seen) {
    demo::FaultView view{.unit_address = seen.unit_address, .who = seen.who};
    for (const SimulatedFault& fault : seen.faults) view.faults.push_back({fault.title, fault.clear});
    return view;
}

}  // namespace

void FaultWindow::open(int unit_address) {
    if (dialog_ == nullptr)
        dialog_ = new demo::frmFault({.watch = [this](auto watched) { send_(act::WatchFaults{watched}); },
                                      .make =
                                          [this](int address, const std::string& line) {
                                              send_(act::MakeFault{address, line});
                                          }},
                                     &window_);
    dialog_->show_for(unit_address);
}

void FaultWindow::follow(std::optional<int> unit_address) {
    if (dialog_ != nullptr)
        dialog_->follow(unit_address);
}

void FaultWindow::take(const SimulatorNotice& notice) {
    if (dialog_ == nullptr)
        return;
    if (const auto* seen = std::get_if<notice::SimulatedFaults>(&notice))
        dialog_->show_faults(view_of(*seen));
    else if (const auto* answer = std::get_if<notice::FaultAnswer>(&notice))
        dialog_->show_answer(answer->unit_address, answer->text);
}

}  // namespace ampdesk
