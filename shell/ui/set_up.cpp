#include "shell/ui/set_up.h"

#include <QApplication>

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

SetUp::SetUp(QWidget& window, Station& station, BusLink& bus, Operator& person, GaugeRange gauge,
             std::vector<std::string> models)
    : window_(window),
      station_(station),
      bus_(bus),
      operator_(person),
      gauge_(gauge),
      models_(std::move(models)),
      line_setup_(bus, person, k_rs422_file) {
    station_.ask_band = [this] { return ask_band(); };
}

SetUp::~SetUp() {
    station_.ask_band = nullptr;
}

void SetUp::new_amplifier() {
    AmplifierSetup logic(bus_, operator_,
                         {.bus_in_use = [this] { return station_.open_count() > 0 && bus_.bus_link_on(); },
                          .address_in_use = [this](int address) { return station_.address_in_use(address); },
                          .ask_band = [this] { return ask_band(); }});
    SetupResult found;
    const auto before = bus_.settings();
    {
        frmSetup dialog(logic, k_rs485_file, bus_.ports(), operator_, &window_);
        dialog.exec();
        found = dialog.result_of_ok();
    }
    const bool add = found.outcome == SetupResult::Outcome::add;
    if (add)
        station_.add_amplifier(found.unit_address, found.number, found.model);
    if (station_.open_count() == 0 || (!add && before))
        give_back(before);
}

void SetUp::line() {
    const auto before = bus_.settings();
    frmSerial(line_setup_, k_rs485_file, bus_.ports(), operator_, &window_).exec();
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

std::string SetUp::ask_band() {
    QWidget* in_front = QApplication::activeModalWidget();
    frmBand dialog(models_, in_front != nullptr ? in_front : &window_);
    dialog.exec();
    return dialog.model();
}

}  // namespace ampdesk
