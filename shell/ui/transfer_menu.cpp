#include "shell/ui/transfer_menu.h"

#include <QAction>
#include <utility>

namespace ampdesk {

TransferMenu::TransferMenu(QMainWindow& window, const TerminalView& terminal, const Clock& clock,
                           Dialogs& person, std::function<void(const TerminalAct&)> send)
    : window_(window), terminal_(terminal), clock_(clock), operator_(person), send_(std::move(send)) {}

// Dialog and dock go with the window, which may outlive this.
TransferMenu::~TransferMenu() {
    if (dialog_)
        dialog_->hooks = {};
    if (debug_)
        debug_->on_watch = nullptr;
}

void TransferMenu::take(const TerminalNotice& notice) {
    std::visit([this](const auto& one) { on(one); }, notice);
}

void TransferMenu::make_dialog(TransferDirection direction) {
    dialog_ = new TransferDialog(direction, terminal_, operator_, &window_);
    dialog_->setAttribute(Qt::WA_DeleteOnClose);
    dialog_->hooks = {.begin =
                          [this](TransferDirection which, bool xmodem, const std::string& path) {
                              send_(act::BeginTransfer{which, xmodem, path});
                          },
                      .end = [this] { send_(act::EndTransfer{}); },
                      .cancel = [this] { send_(act::CancelTransfer{}); }};
    dialog_->show();
}

void TransferMenu::open_dialog(TransferDirection direction) {
    if (!dialog_) {
        if (!line_free(terminal_, operator_))
            return;
        make_dialog(direction);
    }
    dialog_->raise();
    dialog_->activateWindow();
}

// The dialog may have been closed before it was known that its transfer had begun: without one, nobody could
// cancel it.
void TransferMenu::on(const notice::TransferState& state) {
    if (!dialog_ && state.transfer.busy)
        make_dialog(state.transfer.direction);
    if (dialog_)
        dialog_->show_view(state.transfer);
}

// Not at once: other notices wait behind this one.
void TransferMenu::on(const notice::FileNotKept& unkept) {
    const auto ask = [this, unkept] {
        operator_.ask({.text = unkept.cause, .detail = unkept.path});
        send_(act::KeepReceivedFile{
            operator_.choose_file_to_save("Save the received file as", "All Files (*.*)|*.*", unkept.path)});
    };
    QMetaObject::invokeMethod(this, ask, Qt::QueuedConnection);
}

void TransferMenu::on(const notice::Traffic& traffic) {
    if (debug_)
        debug_->add(traffic.chunks);
}

void TransferMenu::toggle_debug(QAction* item) {
    if (!debug_) {
        debug_ = new DebugDock(clock_, operator_, &window_);
        debug_->on_watch = [this](bool on) { send_(act::WatchTraffic{on}); };
        window_.addDockWidget(Qt::BottomDockWidgetArea, debug_);
        connect(debug_->toggleViewAction(), &QAction::toggled, item, &QAction::setChecked);
    }
    debug_->setVisible(debug_->isHidden());
    item->setChecked(!debug_->isHidden());
}

}  // namespace ampdesk
