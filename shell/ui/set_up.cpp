#include "shell/ui/set_up.h"

#include "buslink/ui/frmSerial.h"
#include "buslink/ui/frmSetup.h"
#include "controlhead/ui/frmBand.h"
#include "controlhead/ui/frmColor.h"

namespace ampdesk {

namespace {

// In the program's folder, which is the current one. Both dialogs keep their fields in the first.
constexpr const char* k_rs485_file = "rs485.dat";
constexpr const char* k_rs422_file = "rs422.dat";

}  // namespace

SetUp::SetUp(QWidget& window, Station& station, BusLink& bus, QtOperator& person, GaugeRange gauge,
             std::vector<std::string> models)
    : window_(window),
      station_(station),
      bus_(bus),
      operator_(person),
      gauge_(gauge),
      models_(std::move(models)),
      line_setup_(station, bus, person, k_rs422_file) {
    operator_.make_band_dialog = [this](QWidget* parent) -> QtOperator::BandDialog {
        auto* dialog = new frmBand(models_, parent);
        return {dialog, [dialog] { return dialog->model(); }};
    };
}

SetUp::~SetUp() {
    operator_.make_band_dialog = nullptr;
}

void SetUp::new_amplifier() {
    AmplifierSetup logic(station_, bus_, operator_);
    SetupResult found;
    station_.begin_line_try();
    {
        frmSetup dialog(logic, k_rs485_file, bus_.ports(), operator_, &window_);
        dialog.on_begin = line_wanted;
        dialog.exec();
        found = dialog.result_of_ok();
    }
    if (found.outcome == SetupResult::Outcome::add)
        station_.add_amplifier(found.unit_address, found.number, found.model);
    station_.end_line_try();
}

void SetUp::line() {
    station_.begin_line_try();
    frmSerial dialog(line_setup_, k_rs485_file, bus_.ports(), operator_, &window_);
    dialog.on_begin = line_wanted;
    dialog.exec();
    station_.end_line_try();
}

void SetUp::screen(const std::shared_ptr<ControlHead>& head) {
    frmColor(head, gauge_, operator_, &window_).exec();
}

}  // namespace ampdesk
