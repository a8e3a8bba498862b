#include "station/setup_service.h"

#include <filesystem>
#include <utility>

#include "station/station.h"

namespace ampdesk {

namespace {

// Both dialogs keep their fields in the first.
constexpr const char* k_rs485_file = "rs485.dat";
constexpr const char* k_rs422_file = "rs422.dat";

std::string in_folder(const HeadServices& services, const char* name) {
    return (std::filesystem::path(services.options.folder) / name).lexically_normal().string();
}

}  // namespace

SetupService::SetupService(Station& station, HeadServices& services, Tell tell)
    : station_(station),
      services_(services),
      tell_(std::move(tell)),
      line_(station, services.bus, services.person, in_folder(services, k_rs422_file)) {}

void SetupService::take(const SetupAct& act) {
    std::visit([this](const auto& what) { on(what); }, act);
}

void SetupService::on(const act::OpenSetup& open) {
    if (open_ != nullptr)
        return;
    if (open.kind == SetupKind::amplifier)
        amplifier_ = std::make_unique<AmplifierSetup>(station_, services_.bus, services_.person);
    open_ = amplifier_ ? static_cast<BusSetup*>(amplifier_.get()) : &line_;
    open_->on_result = [this](const SetupResult& result) {
        result_ = result;
        tell_({}, notice::SetupEnded{result});
    };
}

void SetupService::on(const act::BeginSetup& begin) {
    if (open_ == nullptr)
        return;
    if (!std::exchange(trying_, true))
        station_.begin_line_try();
    open_->begin(begin.choices);
}

// The file comes first: the amplifier's own may be made of it.
void SetupService::on(const act::CloseSetup& close) {
    if (open_ == nullptr)
        return;
    std::exchange(open_, nullptr)->on_result = nullptr;
    amplifier_.reset();
    save_bus_choices(in_folder(services_, k_rs485_file), close.choices, services_.person);
    const SetupResult found = std::exchange(result_, {});
    if (found.outcome == SetupResult::Outcome::add)
        station_.add_amplifier(found.unit_address, found.number, found.model);
    if (std::exchange(trying_, false))
        station_.end_line_try();
}

}  // namespace ampdesk
