#include "shell/ui/service_tools.h"

#include "tools/nvram_start.h"

namespace ampdesk {

ServiceTools::ServiceTools(QWidget& window, Station& station, BusLink& bus, QtOperator& person, Hooks hooks)
    : window_(window),
      station_(station),
      bus_(bus),
      operator_(person),
      hooks_(std::move(hooks)),
      console_(bus, person) {
    station_.add_guest(console_);
}

ServiceTools::~ServiceTools() {
    delete block_.data();
    delete intact_.data();
    station_.remove_guest(console_);
}

void ServiceTools::transfer_nvram(NvramTransfer::Mode mode) {
    if (!hooks_.rs422_mode())
        hooks_.set_up_line();
    hooks_.enable_nvram_items(false);
    const auto path = choose_nvram_file(mode, operator_);
    auto transfer = path ? make_nvram_transfer(mode, *path, hooks_.unit_address(), bus_, operator_) : nullptr;
    if (!transfer) {
        hooks_.enable_nvram_items(true);
        return;
    }
    NvramTransfer& guest = *transfer;
    station_.add_guest(guest);
    block_ = new frmBlock(std::move(transfer), &window_);
    block_->on_start = hooks_.line_wanted;
    block_->on_unload = [this, &guest] {
        station_.remove_guest(guest);
        hooks_.enable_nvram_items(true);
    };
    block_->show();
}

void ServiceTools::interactive() {
    if (!intact_)
        intact_ = new frmIntact(console_, history_, hooks_.unit_address, &window_);
    intact_->on_send = hooks_.line_wanted;
    intact_->show();
    intact_->raise();
    intact_->activateWindow();
}

void ServiceTools::close() {
    if (block_)
        block_->Form_Unload();
    if (intact_)
        intact_->close();
}

}  // namespace ampdesk
