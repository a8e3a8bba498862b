#include "station/file_opener.h"

#include <utility>

#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "station/amplifier_files.h"
#include "station/station.h"

namespace ampdesk {

void FileOpener::open_automatically(const std::string& name, const std::string& path) {
    waiting_.push_back({.path = path,
                        .texts = {.interactive = false,
                                  .corrupted = "Default Settings For Serial Port Corrupted In File " + name,
                                  .address_used = "The HPA Address In File " + name +
                                                  " Is Used, Please Pick Up Another One.",
                                  .port_failed = "Serial Initialization Failed For File " + name,
                                  .probe_failed = "Serial Settings In File " + name + " Are Not Right",
                                  .no_serial_number = "Failed To Read SerialNumber For File " + name,
                                  .no_identity = "Failed To Read *IDN For File " + name},
                        .missing = "Couldn't find file " + name});
}

void FileOpener::open(const std::string& path) {
    waiting_.push_back({.path = path,
                        .texts = {.interactive = true,
                                  .corrupted = "Default settings for serial port corrupted",
                                  .address_used = "The HPA Address Is Used, Please Pick Up Another One.",
                                  .port_failed = "Serial Initialization Failed",
                                  .probe_failed = "Serial Settings Are Probably Not Right, Select Settings "
                                                  "Again When Not Communicating",
                                  .no_serial_number = {},
                                  .no_identity = {}},
                        .missing = {}});
}

void FileOpener::cancel() {
    waiting_.clear();
    if (opening_)
        over_ = true;
}

void FileOpener::step() {
    if (std::exchange(over_, false))
        end();
    while (!opening_ && !waiting_.empty()) {
        const File file = std::move(waiting_.front());
        waiting_.pop_front();
        begin(file);
        tell_idle();
    }
}

void FileOpener::begin(const File& file) {
    if (!file.missing.empty() && !file_exists(file.path))
        return operator_.tell({.text = file.missing});
    std::optional<Rs485File> content;
    std::string unreadable;
    try {
        content = read_rs485(file.path);
    } catch (const RunTimeError& error) {
        unreadable = error.what();
    }
    const auto address = content ? unit_address(*content) : std::nullopt;
    if (!address) {
        const std::string cause =
            content ? "\"" + content->address + "\" is no address from 0 to 99" : unreadable;
        return operator_.tell({.text = file.texts.corrupted, .detail = cause});
    }
    if (station_.address_in_use(*address))
        return operator_.tell({.text = file.texts.address_used});
    station_.begin_line_try();
    station_.looks_for(*address);
    if (!open_line(*content, file.texts))
        return station_.end_line_try();
    opening_ =
        std::make_unique<Opening>(bus_, operator_, station_.questions(), *address, file.texts.interactive,
                                  [this, texts = file.texts] { opened(texts); });
    station_.add_guest(*opening_);
}

// The bus is one line: while heads are open on it, a file has to agree with its settings.
bool FileOpener::open_line(const Rs485File& file, const Texts& texts) {
    const auto failed = [&](const std::string& cause) {
        operator_.tell({.text = texts.port_failed, .detail = cause});
        return false;
    };
    const auto wanted = line_settings(file);
    if (!wanted)
        return failed("The file holds no baud code from 0 to 7");
    if (const auto used = bus_.settings(); used && station_.open_count() > 0)
        return AmplifierFiles::same_line(*wanted, *used) ||
               failed("The bus is in use on " + used->port_name + " with " + settings_string(*used));
    return bus_.open_bus_port(*wanted) == 0 || failed(bus_.open_failure());
}

// Within the opening's own call: it goes with the next step.
void FileOpener::opened(const Texts& texts) {
    over_ = true;
    const bool known = opening_->outcome() == Opening::Outcome::known;
    if (known && station_.address_in_use(opening_->address()))  // since it was asked who is there
        operator_.tell({.text = texts.address_used});
    else if (known)
        station_.new_amplifier_window(opening_->address(), opening_->number(), opening_->model(),
                                      texts.interactive);
    else
        tell_outcome(*opening_, texts);
}

void FileOpener::tell_outcome(const Opening& opening, const Texts& texts) {
    const auto tell = [this](const std::string& text, const std::string& cause = {}) {
        operator_.tell({.text = text, .detail = cause});
    };
    using enum Opening::Outcome;
    switch (opening.outcome()) {
        case no_status:
            return tell(texts.probe_failed);
        case no_number:
            return tell(texts.no_serial_number);
        case no_model:
            return tell(texts.no_identity);
        case number_too_large:
            return tell(texts.interactive ? opening.what() : texts.no_serial_number, opening.cause());
        case another_line:
            return tell(texts.port_failed, "Another line has been opened meanwhile");
        case known:
        case given_up:
            return;
    }
}

void FileOpener::end() {
    station_.remove_guest(*opening_);
    opening_.reset();
    station_.end_line_try();
    tell_idle();
}

// Who is told may want not to be told any more.
void FileOpener::tell_idle() {
    if (const auto told = on_idle; told && !busy())
        told();
}

}  // namespace ampdesk
