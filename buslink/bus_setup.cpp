// The setup dialogs' rules, files and OK procedures.
#include "buslink/bus_setup.h"

#include "buslink/settings_files.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

using Outcome = SetupResult::Outcome;

std::int16_t address_value(const BusChoices& choices) {
    return round_to_int16(lenient_number(choices.address));
}

bool open_line(BusLink& bus, Operator& person, const BusChoices& choices) {
    if (bus.open_bus_port(line_settings(choices)) == 0)
        return true;
    person.notify("Com Settings Are Not Valid, Select Settings Again.", bus.open_failure());
    return false;
}

}  // namespace

bool accepted_port(std::string_view text) {
    return text == "COM1:" || text == "COM2:" || text == "COM3:" || text == "COM4:";
}

bool accepted_address(std::string_view text) {
    const double value = lenient_number(text);
    return !trimmed(text).empty() && value >= 0 && value <= 99;
}

std::string checked_port(const std::string& text, Operator& person) {
    if (accepted_port(text))
        return text;
    person.notify("Invalid Com Port");
    return BusChoices{}.port;
}

std::string checked_address(const std::string& text, Operator& person) {
    if (accepted_address(text))
        return text;
    person.notify("Invalid Unit Address");
    return BusChoices{}.address;
}

LineSettings line_settings(const BusChoices& choices) {
    return {.port_name = choices.port,
            .baud = baud_of_code(choices.baud).value_or(0),
            .parity_code = choices.parity,
            .data_bits = choices.bits + 5,
            .stop_bits = choices.stop + 1};
}

BusChoices load_bus_choices(const std::string& path, Operator& person) {
    BusChoices choices;
    std::optional<Rs485File> file;
    try {
        if (file_exists(path))
            file = read_rs485(path);
    } catch (const RunTimeError& error) {
        person.notify(error.what(), path);
    }
    if (!file)
        return choices;
    if (!file->port_name.empty())
        choices.port = file->port_name;
    choices.address = file->address;
    if (baud_of_code(file->baud_code))
        choices.baud = file->baud_code;
    return choices;
}

void save_bus_choices(const std::string& path, const BusChoices& choices, Operator& person) {
    const BusChoices defaults;
    try {
        write_rs485(path,
                    {.port_name = accepted_port(choices.port) ? choices.port : defaults.port,
                     .baud_code = choices.baud,
                     .address = accepted_address(choices.address) ? choices.address : defaults.address});
    } catch (const RunTimeError& error) {
        person.notify(error.what(), path);
    }
}

std::optional<SetupResult> AmplifierSetup::step(const BusChoices& choices) {
    if (!asking_) {
        if (const auto refused = begin(choices))
            return refused;
        operator_.set_busy_pointer(true);
        exchange_once(bus_, *asking_);
        operator_.set_busy_pointer(false);
    } else {
        exchange_once(bus_, *asking_);
    }
    ask_person();
    const auto found = result();
    if (found)
        asking_.reset();
    return found;
}

std::optional<SetupResult> AmplifierSetup::begin(const BusChoices& choices) {
    if (!hooks_.bus_in_use() && !open_line(bus_, operator_, choices))
        return SetupResult{};
    const std::int16_t address = address_value(choices);
    if (hooks_.address_in_use(address)) {
        operator_.ask(
            {.text = "This Address Is Used, Please Pick Up Another One.", .detail = {}, .icon = Icon::none});
        return SetupResult{};
    }
    asking_.emplace(bus_, address);
    return std::nullopt;
}

void AmplifierSetup::ask_person() {
    if (asking_->state() == Identification::State::needs_number)
        asking_->give_serial_number(operator_.input_box("Input amplifier serial number:").value_or(""));
    if (asking_->state() != Identification::State::needs_band)
        return;
    const std::string band = hooks_.ask_band();
    if (band.empty())
        asking_->give_up();
    else
        asking_->give_band(band);
}

// Nothing while there is more to be asked. What has failed is told.
std::optional<SetupResult> AmplifierSetup::result() {
    constexpr std::string_view k_status_failed = "Read Status Failed, Check the Settings";
    using State = Identification::State;
    switch (asking_->state()) {
        case State::working:
        case State::needs_number:
        case State::needs_band:
            return std::nullopt;
        case State::done:
            return SetupResult{.outcome = Outcome::add,
                               .unit_address = static_cast<std::int16_t>(asking_->address()),
                               .number = asking_->number(),
                               .model = asking_->model()};
        case State::given_up:
            return SetupResult{.outcome = Outcome::close};
        case State::no_status:
            operator_.notify(k_status_failed);
            break;
        case State::another_line:
            operator_.notify(k_status_failed, "Another line has been opened meanwhile");
            break;
        case State::number_too_large:
            operator_.notify(asking_->failure());
            break;
    }
    return SetupResult{};
}

std::optional<SetupResult> LineSetup::step(const BusChoices& choices) {
    if (!open_line(bus_, operator_, choices))
        return SetupResult{};
    rs422_mode_ = true;
    try {
        write_rs422(rs422_path_, {.port_name = choices.port,
                                  .baud_code = choices.baud,
                                  .data_bits_code = choices.bits,
                                  .parity_code = choices.parity,
                                  .stop_bits_code = choices.stop});
    } catch (const RunTimeError& error) {
        operator_.notify(error.what(), rs422_path_);
    }
    operator_.set_busy_pointer(true);
    const bool answered = answers_probe(bus_.carry_out(status_probe(address_value(choices))));
    operator_.set_busy_pointer(false);
    if (!answered)
        operator_.notify("Com Settings Are Probably Not Right, Select Settings Again When Not Communicating");
    return SetupResult{.outcome = Outcome::close};
}

}  // namespace ampdesk
