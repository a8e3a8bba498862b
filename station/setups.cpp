#include "station/setups.h"

#include <utility>

#include "buslink/settings_files.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"
#include "station/station.h"

namespace ampdesk {

namespace {

using Outcome = SetupResult::Outcome;

std::int16_t address_value(const BusChoices& choices) {
    return round_to_int16(lenient_number(choices.address));
}

bool open_line(BusLink& bus, Operator& person, const BusChoices& choices) {
    if (bus.open_bus_port(line_settings(choices)) == 0)
        return true;
    person.tell({.text = "Com Settings Are Not Valid, Select Settings Again.", .detail = bus.open_failure()});
    return false;
}

}  // namespace

AmplifierSetup::~AmplifierSetup() {
    if (opening_)
        station_.remove_guest(*opening_);
}

void AmplifierSetup::begin(const BusChoices& choices) {
    const bool in_use = station_.open_count() > 0 && bus_.bus_link_on();
    if (!in_use && !open_line(bus_, operator_, choices))
        return end({});
    const std::int16_t address = address_value(choices);
    station_.looks_for(address);
    if (station_.tell_if_address_used(address))
        return end({});
    if (opening_)
        station_.remove_guest(*opening_);
    opening_ =
        std::make_unique<Opening>(bus_, operator_, station_.questions(), address, true, [this] { opened(); });
    station_.add_guest(*opening_);
}

void AmplifierSetup::opened() {
    using enum Opening::Outcome;
    constexpr const char* k_status_failed = "Read Status Failed, Check the Settings";
    switch (opening_->outcome()) {
        case known:
            return end({.outcome = Outcome::add,
                        .unit_address = opening_->address(),
                        .number = opening_->number(),
                        .model = opening_->model()});
        case given_up:
            return end({.outcome = Outcome::close});
        case another_line:
            operator_.tell({.text = k_status_failed, .detail = "Another line has been opened meanwhile"});
            break;
        case number_too_large:
            operator_.tell({.text = opening_->what()});
            break;
        default:
            operator_.tell({.text = k_status_failed});
            break;
    }
    end({});
}

void AmplifierSetup::end(const SetupResult& result) {
    if (on_result)
        on_result(result);
}

LineSetup::LineSetup(Station& station, BusLink& bus, Operator& person, std::string rs422_path)
    : station_(station), bus_(bus), operator_(person), rs422_path_(std::move(rs422_path)) {
    station_.add_guest(*this);
}

LineSetup::~LineSetup() {
    station_.remove_guest(*this);
}

void LineSetup::begin(const BusChoices& choices) {
    if (!open_line(bus_, operator_, choices)) {
        if (on_result)
            on_result({});
        return;
    }
    rs422_mode_ = true;
    station_.keep_line();
    try {
        write_rs422(rs422_path_, {.port_name = choices.port,
                                  .baud_code = choices.baud,
                                  .data_bits_code = choices.bits,
                                  .parity_code = choices.parity,
                                  .stop_bits_code = choices.stop});
    } catch (const RunTimeError& error) {
        operator_.tell({.text = error.what(), .detail = rs422_path_});
    }
    probe_ = address_value(choices);
    station_.looks_for(*probe_);
}

std::optional<Instant> LineSetup::due() const {
    return probe_ ? std::optional(Instant{}) : std::nullopt;
}

std::optional<BusCommand> LineSetup::next() {
    if (!probe_)
        return std::nullopt;
    operator_.set_busy_pointer(true);
    return status_probe(*std::exchange(probe_, std::nullopt));
}

void LineSetup::ended(const BusReply& reply) {
    operator_.set_busy_pointer(false);
    if (!answers_probe(reply))
        operator_.tell({.text = "Com Settings Are Probably Not Right, Select Settings Again When Not "
                                "Communicating"});
    if (on_result)
        on_result({.outcome = Outcome::close});
}

}  // namespace ampdesk
