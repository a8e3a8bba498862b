// The setup dialogs' rules, files and OK procedures.
#include "buslink/bus_setup.h"

#include "buslink/settings_files.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

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

}  // namespace ampdesk
