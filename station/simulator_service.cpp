#include "station/simulator_service.h"

#include <utility>

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_look_every{500};

}  // namespace

void SimulatorService::take(const SimulatorAct& act) {
    if (simulator_ != nullptr)
        std::visit([this](const auto& what) { on(what); }, act);
}

void SimulatorService::step() {
    if (watched_ && clock_.now() >= next_look_)
        look();
}

std::optional<Instant> SimulatorService::due() const {
    return watched_ ? std::optional(next_look_) : std::nullopt;
}

void SimulatorService::on(const act::WatchFaults& watch) {
    const bool simulated = watch.unit_address && simulator_->who(*watch.unit_address);
    watched_ = simulated ? watch.unit_address : std::nullopt;
    told_ = {};
    if (simulated)
        look();
    else
        tell_("faults", told_);
}

void SimulatorService::on(const act::MakeFault& make) {
    tell_({}, notice::FaultAnswer{.unit_address = make.unit_address,
                                  .text = simulator_->make_fault(make.unit_address, make.line)});
    if (watched_)
        look();
}

void SimulatorService::look() {
    next_look_ = clock_.now() + k_look_every;
    notice::SimulatedFaults seen{.unit_address = watched_,
                                 .who = simulator_->who(*watched_).value_or(""),
                                 .faults = simulator_->faults(*watched_)};
    if (seen == told_)
        return;
    told_ = seen;
    tell_("faults", std::move(seen));
}

}  // namespace ampdesk
