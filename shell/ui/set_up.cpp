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
    const auto before = bus_.settings();
    station_.remember_line();
    {
        frmSetup dialog(logic, k_rs485_file, bus_.ports(), operator_, &window_);
        dialog.on_begin = line_wanted;
        dialog.exec();
        found = dialog.result_of_ok();
    }
    const bool add = found.outcome == SetupResult::Outcome::add;
    if (add)
        station_.add_amplifier(found.unit_address, found.number, found.model);
    else if (station_.open_count() == 0 || before)
        give_back(before);
}

void SetUp::line() {
    const auto before = bus_.settings();
    frmSerial dialog(line_setup_, k_rs485_file, bus_.ports(), operator_, &window_);
    dialog.on_begin = line_wanted;
    dialog.exec();
    if (!bus_.bus_link_on())
        give_back(before);
}

// Nothing came of a dialog: the line goes back to the amplifiers, or the remote station, that it
// served before.
void SetUp::give_back(const std::optional<LineSettings>& before) {
    if (const std::string lost = bus_.give_back(before); !lost.empty())
        operator_.notify(lost, bus_.open_failure());
}

void SetUp::screen(const std::shared_ptr<ControlHead>& head) {
    frmColor(head, gauge_, operator_, &window_).exec();
}

}  // namespace ampdesk
