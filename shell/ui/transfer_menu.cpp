#include "shell/ui/transfer_menu.h"

#include <QAction>

#include "terminal/null_modem_test.h"

namespace ampdesk {

TransferMenu::TransferMenu(QMainWindow& window, TerminalLine& line, BusLink& bus, Dialogs& person,
                           std::function<bool()> line_free, std::function<void()> over)
    : window_(window),
      line_(line),
      bus_(bus),
      operator_(person),
      line_free_(std::move(line_free)),
      over_(std::move(over)) {}

void TransferMenu::open_dialog(TransferDirection direction) {
    if (!dialog_) {
        if (!line_free_())
            return;
        dialog_ = new TransferDialog(direction, line_, operator_, &window_);
        dialog_->setAttribute(Qt::WA_DeleteOnClose);
        dialog_->line_free = line_free_;
        connect(dialog_, &TransferDialog::over, this, [this] { over_(); });
    }
    dialog_->show();
    dialog_->raise();
    dialog_->activateWindow();
}

void TransferMenu::toggle_debug(QAction* item) {
    if (debug_ == nullptr) {
        debug_ = new DebugDock(bus_, line_, operator_, &window_);
        window_.addDockWidget(Qt::BottomDockWidgetArea, debug_);
        connect(debug_->toggleViewAction(), &QAction::toggled, item, &QAction::setChecked);
    }
    debug_->setVisible(debug_->isHidden());
    item->setChecked(!debug_->isHidden());
}

void TransferMenu::test_null_modem() {
    if (!line_free_())
        return;
    const Instant now = line_.clock().now();
    const auto stamp = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    auto* driver = new TransferDriver(
        line_,
        std::make_unique<NullModemTest>(line_.port()->modem_lines(), static_cast<unsigned>(stamp),
                                        character_time(line_.settings()), now),
        this);
    connect(driver, &TransferDriver::over, this, [this, driver] {
        driver->deleteLater();
        over_();
        Message message;
        message.text = driver->transfer().message();
        message.icon = Icon::information;
        message.title = "Null Modem Test";
        operator_.ask(message);
    });
    if (!driver->start())
        delete driver;
}

}  // namespace ampdesk
