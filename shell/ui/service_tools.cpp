#include "shell/ui/service_tools.h"

#include <utility>

#include "tools/nvram_choice.h"

namespace ampdesk {

ServiceTools::ServiceTools(QWidget& window, Dialogs& person, Hooks hooks)
    : window_(window), operator_(person), hooks_(std::move(hooks)) {}

ServiceTools::~ServiceTools() {
    delete block_.data();
    delete intact_.data();
}

void ServiceTools::transfer_nvram(NvramTransfer::Mode mode) {
    if (!hooks_.rs422_mode())
        hooks_.set_up_line();
    hooks_.enable_nvram_items(false);
    if (const auto path = choose_nvram_file(mode, operator_)) {
        beginning_ = true;
        hooks_.send(act::BeginNvram{mode, *path, hooks_.unit_address()});
    } else {
        hooks_.enable_nvram_items(true);
    }
}

void ServiceTools::interactive() {
    if (!intact_)
        intact_ = new frmIntact(history_,
                                {.unit_address = hooks_.unit_address,
                                 .send =
                                     [this](std::int16_t unit_address, const std::string& text) {
                                         hooks_.send(act::SendConsoleCommand{unit_address, text});
                                     }},
                                &window_);
    intact_->show();
    intact_->raise();
    intact_->activateWindow();
}

void ServiceTools::take(const ToolNotice& notice) {
    std::visit([this](const auto& one) { on(one); }, notice);
}

// What comes of a transfer whose window has been closed already opens no other one.
void ServiceTools::on(const notice::NvramState& state) {
    const bool beginning = std::exchange(beginning_, false);
    if (!state.panel) {
        if (block_)
            block_->Form_Unload();
        hooks_.enable_nvram_items(true);
    } else if (block_) {
        block_->show_panel(*state.panel);
    } else if (beginning) {
        open_block(*state.panel);
    }
}

void ServiceTools::open_block(const NvramPanel& panel) {
    block_ = new frmBlock(panel,
                          {.start = [this] { hooks_.send(act::StartNvram{}); },
                           .pause = [this] { hooks_.send(act::PauseNvram{}); },
                           .exit =
                               [this] {
                                   block_ = nullptr;
                                   hooks_.send(act::ExitNvram{});
                               }},
                          &window_);
    block_->show();
}

void ServiceTools::on(const notice::ConsoleSending& /*sending*/) {
    if (intact_)
        intact_->show_sending();
}

void ServiceTools::on(const notice::ConsoleResult& result) {
    if (intact_)
        intact_->show_result(result.result);
}

void ServiceTools::close() {
    if (block_)
        block_->Form_Unload();
    if (intact_)
        intact_->close();
}

}  // namespace ampdesk
