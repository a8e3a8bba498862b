#include "station/amplifier_files.h"

#include <filesystem>
#include <stdexcept>

#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

// Nothing for a file that is none or cannot be read.
std::optional<Rs485File> read(const std::string& path) {
    try {
        return read_rs485(path);
    } catch (const RunTimeError&) {
        return std::nullopt;
    }
}

}  // namespace

std::string AmplifierFiles::name_of(const std::string& number) {
    return "com" + number + ".dat";
}

std::string AmplifierFiles::path_of(const std::string& name) const {
    return (std::filesystem::path(services_.options.folder) / name).string();
}

bool AmplifierFiles::same_line(const LineSettings& a, const LineSettings& b) {
    return port_number(a.port_name) == port_number(b.port_name) && a.baud == b.baud;
}

bool AmplifierFiles::leads_to(const Rs485File& file, int address) const {
    const auto line = line_settings(file);
    const auto used = services_.bus.settings();
    return line && used && same_line(*line, *used) && unit_address(file) == address;
}

bool AmplifierFiles::exists(const std::string& name) const {
    return file_exists(path_of(name));
}

std::optional<std::string> AmplifierFiles::stale_state(const std::string& name, int address) const {
    if (!exists(name))
        return std::nullopt;
    const auto file = read(path_of(name));
    if (file && leads_to(*file, address))
        return std::nullopt;
    const auto held = file ? unit_address(*file) : std::nullopt;
    if (!held)
        return "is damaged";
    return *held != address ? "holds address " + std::to_string(*held) : "holds another port or baud rate";
}

// "rs485.dat" may tell something else: it could not be written, or the dialog's port and rate were
// not used because open amplifiers hold the line.
void AmplifierFiles::make(int address, const std::string& name) const {
    const std::string fields = path_of("rs485.dat");
    const auto file = read(fields);
    if (file && leads_to(*file, address))
        copy_file_bytes(fields, path_of(name));
    else
        write(address, path_of(name));
}

void AmplifierFiles::write(int address, const std::string& path) const {
    const auto used = services_.bus.settings();
    if (!used)
        throw std::runtime_error("No line to the amplifiers is open");
    write_rs485(path, {.port_name = used->port_name,
                       .baud_code = code_of_baud(used->baud).value_or(Rs485File{}.baud_code),
                       .address = std::to_string(address)});
}

}  // namespace ampdesk
