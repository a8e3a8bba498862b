// The station's dealings with amplifier files: which checks a file passes before its control head
// opens, in which words a failure is told, and how the files are written.
#include "station/station.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "buslink/identity.h"
#include "buslink/settings_files.h"
#include "controlhead/screen_settings.h"
#include "platform/numbers.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_most_names = 100;  // the number of unit addresses
constexpr std::string_view k_filter = "Amplifier Files (com*.dat)|com*.dat|All Files (*.*)|*.*";

std::string amplifier_file_name(const std::string& number) {
    return "com" + number + ".dat";
}

// A name as it stands in the program's folder; a full path stays as it is.
std::string in_folder(const HeadServices& services, const std::string& name) {
    return (std::filesystem::path(services.options.folder) / name).string();
}

// As far as an amplifier file tells a line.
bool same_line(const LineSettings& a, const LineSettings& b) {
    return port_number(a.port_name) == port_number(b.port_name) && a.baud == b.baud;
}

std::string settings_in_use(const LineSettings& settings) {
    return "The bus is in use on " + settings.port_name + " with " + settings_string(settings);
}

}  // namespace

// What is said when a file does not pass, and whether somebody is there to be asked.
struct Station::OpenTexts {
    bool interactive = false;
    std::string corrupted;
    std::string address_used;
    std::string port_failed;
    std::string probe_failed;
    std::string no_serial_number;
    std::string no_identity;
};

void Station::auto_open_dat_files(const std::vector<std::string>& names) {
    const unsigned closings = closings_;
    for (std::size_t i = 0; i < std::min(names.size(), k_most_names) && closings == closings_; ++i) {
        const std::string& name = names[i];
        const std::string path = in_folder(services_, name);
        if (file_exists(path))
            open_file(path, {.interactive = false,
                             .corrupted = "Default Settings For Serial Port Corrupted In File " + name,
                             .address_used =
                                 "The HPA Address In File " + name + " Is Used, Please Pick Up Another One.",
                             .port_failed = "Serial Initialization Failed For File " + name,
                             .probe_failed = "Serial Settings In File " + name + " Are Not Right",
                             .no_serial_number = "Failed To Read SerialNumber For File " + name,
                             .no_identity = "Failed To Read *IDN For File " + name});
        else
            services_.person.notify("Couldn't find file " + name);
        services_.person.let_events_run();
    }
}

void Station::open_amplifier_file() {
    const auto path = services_.person.choose_file_to_open("Open A Amplifier File To Read", k_filter);
    if (!path)
        return;
    open_file(*path, {.interactive = true,
                      .corrupted = "Default settings for serial port corrupted",
                      .address_used = "The HPA Address Is Used, Please Pick Up Another One.",
                      .port_failed = "Serial Initialization Failed",
                      .probe_failed = "Serial Settings Are Probably Not Right, Select Settings Again When "
                                      "Not Communicating",
                      .no_serial_number = {},
                      .no_identity = {}});
}

void Station::open_file(const std::string& path, const OpenTexts& texts) {
    std::optional<Rs485File> file;
    const std::string unreadable = failure_of([&] { file = read_rs485(path); });
    const auto address = file ? unit_address(*file) : std::nullopt;
    if (!address) {
        const std::string cause = file ? "\"" + file->address + "\" is no address from 0 to 99" : unreadable;
        return services_.person.notify(texts.corrupted, cause);
    }
    if (address_in_use(*address))
        return services_.person.notify(texts.address_used);

    BusLink& bus = services_.bus;
    if (open_count() == 0)
        line_before_ = bus.settings();
    const unsigned closings = closings_;
    if (open_line(*file, texts)) {
        const auto probed = bus.settings();
        const auto found = identify(*address, texts);
        const bool same =
            bus.settings() == probed;  // its boxes stand while a remote station may open another
        if (found && !same)
            services_.person.notify(texts.port_failed, "Another line has been opened meanwhile");
        else if (found && closings == closings_)
            new_amplifier_window(static_cast<std::int16_t>(*address), found->number, found->model,
                                 texts.interactive);
    }
    give_line_back();
}

// When no head came of it the line goes back to whom it served before.
void Station::give_line_back() {
    BusLink& bus = services_.bus;
    if (open_count() > 0)
        return;
    if (const std::string lost = bus.give_back(line_before_); !lost.empty())
        services_.person.notify(lost, bus.open_failure());
}

// The bus is one line: while heads are open on it, a file has to agree with its settings.
bool Station::open_line(const Rs485File& file, const OpenTexts& texts) {
    BusLink& bus = services_.bus;
    const auto wanted = line_settings(file);
    if (!wanted) {
        services_.person.notify(texts.port_failed, "The file holds no baud code from 0 to 7");
        return false;
    }
    if (const auto used = bus.settings(); used && open_count() > 0) {
        const bool agrees = same_line(*wanted, *used);
        if (!agrees)
            services_.person.notify(texts.port_failed, settings_in_use(*used));
        return agrees;
    }
    if (bus.open_bus_port(*wanted) == 0)
        return true;
    services_.person.notify(texts.port_failed, bus.open_failure());
    return false;
}

// Who answers at that address. Nothing when nobody does or the operator gives up; that was told.
std::optional<Station::Identity> Station::identify(int address, const OpenTexts& texts) {
    Operator& person = services_.person;
    BusLink& bus = services_.bus;
    const auto give_up = [&](const std::string& text, const std::string& cause = {}) {
        person.notify(text, cause);
        return std::nullopt;
    };
    bus.bus_address = static_cast<std::int16_t>(address);
    if (bus.probe_link() != 0)
        return give_up(texts.probe_failed);

    std::string serial_number = read_serial_number(bus, address);
    if (serial_number.empty() && !texts.interactive)
        return give_up(texts.no_serial_number);
    if (serial_number.empty())
        serial_number = trimmed(person.input_box("Input amplifier serial number:").value_or(""));
    if (serial_number.empty())
        return std::nullopt;
    Identity found;
    const std::string failure = failure_of([&] { found.number = amplifier_number(serial_number); });
    if (!failure.empty())
        return give_up(texts.interactive ? failure : texts.no_serial_number,
                       "Serial number " + serial_number + " is too large");

    const auto model = read_model(bus, address);
    if (!model && !texts.interactive)
        return give_up(texts.no_identity);
    found.model = model ? *model : ask_band ? ask_band() : std::string();
    if (!model && ask_band && found.model.empty())
        return std::nullopt;
    return found;
}

void Station::add_amplifier(std::int16_t unit_address, const std::string& number, const std::string& model) {
    const std::string name = amplifier_file_name(number);
    if (may_replace(name, unit_address)) {
        UnsavedFiles unsaved;
        unsaved.attempt(name, [&] { make_amplifier_file(unit_address, in_folder(services_, name)); });
        unsaved.tell(services_.person);
    }
    new_amplifier_window(unit_address, number, model, true);
}

// Whether the file leads to that address on the line in use.
bool Station::leads_to(const Rs485File& file, int address) const {
    const auto line = line_settings(file);
    const auto used = services_.bus.settings();
    return line && used && same_line(*line, *used) && unit_address(file) == address;
}

// Whether the amplifier's file is to be made anew. Who opens it next must not end up at an address or
// a line that the amplifier has left; but nothing is replaced without being asked.
bool Station::may_replace(const std::string& name, int address) {
    const std::string path = in_folder(services_, name);
    if (!file_exists(path))
        return true;
    std::optional<Rs485File> file;
    failure_of([&] { file = read_rs485(path); });
    if (file && leads_to(*file, address))
        return false;
    const auto held = file ? unit_address(*file) : std::nullopt;
    std::string state = " is damaged";
    if (held)
        state =
            *held != address ? " holds address " + std::to_string(*held) : " holds another port or baud rate";
    return services_.person.ask({.text = "File " + name + state + ". Replace it?",
                                 .detail = {},
                                 .icon = Icon::question,
                                 .buttons = Buttons::yes_no}) == Answer::yes;
}

// "rs485.dat" may tell something else: it could not be written, or the dialog's port and rate were
// not used because open amplifiers hold the line.
void Station::make_amplifier_file(int address, const std::string& path) {
    const std::string fields = in_folder(services_, "rs485.dat");
    std::optional<Rs485File> file;
    failure_of([&] { file = read_rs485(fields); });
    if (file && leads_to(*file, address))
        copy_file_bytes(fields, path);
    else
        write_amplifier_file(address, path);
}

// A file that is there stays as it is when no line is open: what else it could be given is a guess.
void Station::write_amplifier_file(int address, const std::string& path) {
    const auto used = services_.bus.settings();
    if (!used)
        throw std::runtime_error("No line to the amplifiers is open");
    write_rs485(path, {.port_name = used->port_name,
                       .baud_code = code_of_baud(used->baud).value_or(Rs485File{}.baud_code),
                       .address = std::to_string(address)});
}

void Station::save(const ControlHead& head) {
    UnsavedFiles unsaved;
    save(head, unsaved);
    unsaved.tell(services_.person);
}

void Station::save(const ControlHead& head, UnsavedFiles& unsaved) {
    const std::string& number = head.identity().number;
    const std::string name = amplifier_file_name(number);
    unsaved.attempt(name,
                    [&] { write_amplifier_file(head.identity().unit_address, in_folder(services_, name)); });
    unsaved.attempt(screen_settings_name(number), [&] { head.save_screen_settings(); });
}

void Station::save_as(const ControlHead& head) {
    const auto path = services_.person.choose_file_to_save("Save Amplifier File As", k_filter,
                                                           amplifier_file_name(head.identity().number));
    if (!path)
        return;
    UnsavedFiles unsaved;
    unsaved.attempt(*path, [&] { write_amplifier_file(head.identity().unit_address, *path); });
    unsaved.tell(services_.person);
}

void Station::save_all() {
    UnsavedFiles unsaved;
    for (const auto& head : open_heads()) save(*head, unsaved);
    unsaved.tell(services_.person);
}

}  // namespace ampdesk
