// The setup dialogs' rules, files and OK procedures.
#include "buslink/bus_setup.h"

#include <utility>

#include "buslink/identity.h"
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

bool answers(BusLink& bus, std::int16_t address) {
    bus.bus_address = address;
    return bus.probe_link() == 0;
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
    switch (std::exchange(stage_, Stage::find)) {
        case Stage::number:
            return read_number();
        case Stage::model:
            return read_model_name();
        case Stage::find:
            break;
    }
    return find(choices);
}

std::optional<SetupResult> AmplifierSetup::find(const BusChoices& choices) {
    if (!hooks_.bus_in_use() && !open_line(bus_, operator_, choices))
        return SetupResult{};
    const std::int16_t address = address_value(choices);
    if (hooks_.address_in_use(address)) {
        operator_.ask(
            {.text = "This Address Is Used, Please Pick Up Another One.", .detail = {}, .icon = Icon::none});
        return SetupResult{};
    }
    if (!answers(bus_, address)) {
        operator_.notify("Read Status Failed, Check the Settings");
        return SetupResult{};
    }
    found_ = {.outcome = Outcome::add, .unit_address = address};
    line_ = bus_.settings();
    stage_ = Stage::number;
    return std::nullopt;
}

std::optional<SetupResult> AmplifierSetup::read_number() {
    std::string serial_number = read_serial_number(bus_, found_.unit_address);
    if (serial_number.empty())
        serial_number = trimmed(operator_.input_box("Input amplifier serial number:").value_or(""));
    if (serial_number.empty())
        return SetupResult{.outcome = Outcome::close};
    try {
        found_.number = amplifier_number(serial_number);
    } catch (const RunTimeError& error) {
        operator_.notify(error.what());
        return SetupResult{};
    }
    stage_ = Stage::model;
    return std::nullopt;
}

SetupResult AmplifierSetup::read_model_name() {
    const std::optional<std::string> reported = read_model(bus_, found_.unit_address);
    found_.model = reported ? *reported : hooks_.ask_band();
    if (!reported && found_.model.empty())
        return {.outcome = Outcome::close};
    // A question may have stood for long, and a remote station may have opened another line meanwhile.
    if (bus_.settings() != line_) {
        operator_.notify("Read Status Failed, Check the Settings", "Another line has been opened meanwhile");
        return {};
    }
    return found_;
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
    if (!answers(bus_, address_value(choices)))
        operator_.notify("Com Settings Are Probably Not Right, Select Settings Again When Not Communicating");
    return SetupResult{.outcome = Outcome::close};
}

}  // namespace ampdesk
