#include "shell/ui/set_up.h"

#include <utility>

#include "buslink/ui/frmSerial.h"
#include "buslink/ui/frmSetup.h"
#include "controlhead/ui/frmBand.h"
#include "controlhead/ui/frmColor.h"

namespace ampdesk {

namespace {

// In the program's folder, which is the current one. Both dialogs take their fields from it.
constexpr const char* k_rs485_file = "rs485.dat";

// OK of a dialog, which the station carries out.
class SentSetup : public BusSetup {
  public:
    explicit SentSetup(const std::function<void(const Act&)>& send) : send_(send) {}
    void begin(const BusChoices& choices) override { send_(act::BeginSetup{choices}); }

  private:
    const std::function<void(const Act&)>& send_;
};

}  // namespace

SetUp::SetUp(QWidget& window, PortMap ports, QtOperator& person, GaugeRange gauge,
             std::vector<std::string> models, std::function<void(const Act&)> send)
    : window_(window),
      ports_(std::move(ports)),
      operator_(person),
      gauge_(gauge),
      models_(std::move(models)),
      send_(std::move(send)) {
    operator_.make_band_dialog = [this](QWidget* parent) -> QtOperator::BandDialog {
        auto* dialog = new frmBand(models_, parent);
        return {dialog, [dialog] { return dialog->model(); }};
    };
}

SetUp::~SetUp() {
    operator_.make_band_dialog = nullptr;
}

void SetUp::new_amplifier() {
    show<frmSetup>(SetupKind::amplifier);
}

void SetUp::line() {
    show<frmSerial>(SetupKind::line);
}

// The station hears of the end in any case, also when the program is told to quit with the dialog open.
template <class Dialog>
void SetUp::show(SetupKind kind) {
    SentSetup setup(send_);
    Dialog dialog(setup, k_rs485_file, ports_, operator_, &window_);
    send_(act::OpenSetup{kind});
    open_ = &setup;
    dialog.exec();
    open_ = nullptr;
    send_(act::CloseSetup{dialog.choices()});
}

void SetUp::take(const SetupNotice& notice) {
    if (open_ != nullptr)
        open_->on_result(std::get<notice::SetupEnded>(notice).result);
}

void SetUp::screen(const frmMachine& machine) {
    frmColor dialog(machine.view().panel, gauge_, operator_, &window_);
    dialog.on_ok = [this, head = machine.identity().id](const ScreenSettings& look) {
        send_(act::SetLook{head, look});
    };
    dialog.exec();
}

}  // namespace ampdesk
