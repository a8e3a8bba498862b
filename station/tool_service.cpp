#include "station/tool_service.h"

#include <utility>

#include "station/station.h"

namespace ampdesk {

ToolService::ToolService(Station& station, BusLink& bus, Operator& person, Tell tell)
    : station_(station), bus_(bus), operator_(person), tell_(std::move(tell)), console_(bus, person) {
    console_.on_sending = [this] { tell_({}, notice::ConsoleSending{}); };
    console_.on_result = [this](const Console::Result& result) { tell_({}, notice::ConsoleResult{result}); };
    station_.add_guest(console_);
}

ToolService::~ToolService() {
    if (transfer_)
        station_.remove_guest(*transfer_);
    station_.remove_guest(console_);
}

void ToolService::take(const ToolAct& act) {
    std::visit([this](const auto& what) { on(what); }, act);
}

void ToolService::step() {
    if (due())
        end_transfer();
}

std::optional<Instant> ToolService::due() const {
    return transfer_ && transfer_->nvram_abort ? std::optional(Instant{}) : std::nullopt;
}

void ToolService::end_transfer() {
    if (!transfer_)
        return;
    transfer_->on_panel = nullptr;
    transfer_->unload();
    station_.remove_guest(*transfer_);
    transfer_.reset();
    tell_state();
}

void ToolService::on(const act::BeginNvram& begin) {
    if (transfer_)
        return;
    transfer_ = make_nvram_transfer(begin.mode, begin.path, begin.unit_address, bus_, operator_);
    if (transfer_) {
        transfer_->on_panel = [this] { tell_state(); };
        station_.add_guest(*transfer_);
    }
    tell_state();
}

void ToolService::on(const act::StartNvram& /*start*/) {
    if (transfer_)
        transfer_->start();
}

void ToolService::on(const act::PauseNvram& /*pause*/) {
    if (transfer_)
        transfer_->pause();
}

void ToolService::on(const act::ExitNvram& /*exit*/) {
    end_transfer();
}

void ToolService::on(const act::SendConsoleCommand& command) {
    console_.begin(command.unit_address, command.text);
}

void ToolService::tell_state() {
    tell_("nvram",
          notice::NvramState{transfer_ ? std::optional<NvramPanel>(transfer_->panel()) : std::nullopt});
}

}  // namespace ampdesk
