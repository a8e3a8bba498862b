#include "demo/ampsim_options.h"

#include <algorithm>
#include <optional>

#include "demo/faults.h"
#include "demo/whole_number.h"
#include "platform/numbers.h"

namespace ampdesk::demo {

namespace {

constexpr long k_largest_serial = 2'147'483'647;  // the station keeps it in 32 bits
constexpr std::size_t k_longest_model = 40;

// What the options say before the amplifiers are made of it.
struct Collected {
    AmpsimOptions options;
    SimModel model;
    std::vector<int> addresses;

    void refuse(const std::string& option, const std::string& why) {
        if (options.error.empty())
            options.error = option + " " + why;
    }

    long number(const std::string& option, std::string_view text, long low, long high) {
        const auto value = whole_number(text, low, high);
        if (!value)
            refuse(option, "wants a number from " + std::to_string(low) + " to " + std::to_string(high));
        return value.value_or(low);
    }

    void add_addresses(std::string_view list) {
        for (;;) {
            const std::size_t comma = list.find(',');
            const int address = static_cast<int>(number("--address", list.substr(0, comma), 0, 99));
            if (std::find(addresses.begin(), addresses.end(), address) != addresses.end())
                refuse("--address", "has " + std::to_string(address) + " twice");
            addresses.push_back(address);
            if (comma == std::string_view::npos)
                return;
            list.remove_prefix(comma + 1);
        }
    }

    // "NAME:ARGUMENT" becomes the command line "NAME ARGUMENT".
    void add_fault(std::string line) {
        const std::size_t colon = line.find(':');
        if (colon != std::string::npos)
            line[colon] = ' ';
        options.faults.push_back(std::move(line));
    }
};

struct Option {
    std::string_view name;
    std::string_view value;  // as the help shows it; empty when it takes none
    std::string_view help;
    void (*take)(Collected&, const std::string& value);
};

constexpr Option k_options[] = {
    {"--address", "N[,N...]", "unit addresses, 0 to 99: one amplifier each",
     [](Collected& c, const std::string& v) { c.add_addresses(v); }},
    {"--model", "TEXT", "model text, C/KU/X unless told; its first word chooses the bands",
     [](Collected& c, const std::string& v) {
         if (trimmed(v).empty() || v.size() > k_longest_model)
             c.refuse("--model", "wants a text of 1 to 40 characters");
         c.model.name = trimmed(v);
     }},
    {"--serial", "N", "serial number of the first amplifier, 1001 unless told; the next has N + 1",
     [](Collected& c, const std::string& v) {
         c.model.serial = c.number("--serial", v, 1, k_largest_serial - 99);
     }},
    {"--baud", "N", "paces the replies as a line of that speed would, ten bits a byte",
     [](Collected& c, const std::string& v) {
         c.options.byte_time =
             std::chrono::nanoseconds(10'000'000'000 / c.number("--baud", v, 50, 1'000'000));
     }},
    {"--link", "PATH", "makes a symbolic link to the device and removes it at the end",
     [](Collected& c, const std::string& v) { c.options.link = v; }},
    {"--signed", "", "sends negative quantities as two's complement, for negative_words=signed",
     [](Collected& c, const std::string&) { c.model.signed_words = true; }},
    {"--warm-up", "SECONDS", "until HV is accepted, 0 unless told",
     [](Collected& c, const std::string& v) {
         c.model.warm_up = std::chrono::seconds(c.number("--warm-up", v, 0, 3600));
     }},
    {"--fault", "NAME[:ARGUMENT]", "makes that fault at the start; may be given more than once",
     [](Collected& c, const std::string& v) { c.add_fault(v); }},
    {"--help", "", "shows this text", [](Collected& c, const std::string&) { c.options.help = true; }},
};

std::string help_line(std::string_view name, std::string_view value, std::string_view help) {
    std::string left = std::string(name) + (value.empty() ? "" : " ") + std::string(value);
    return "  " + left_aligned(left, 26) + std::string(help) + "\n";
}

}  // namespace

AmpsimOptions parse_ampsim_options(const std::vector<std::string>& arguments) {
    Collected collected;
    for (auto it = arguments.begin(); it != arguments.end(); ++it) {
        const std::size_t equals = it->find('=');
        const std::string name = it->substr(0, equals);
        const auto* option = std::find_if(std::begin(k_options), std::end(k_options),
                                          [&](const Option& known) { return known.name == name; });
        if (option == std::end(k_options)) {
            collected.refuse(*it, "is not known");
            break;
        }
        std::string value;
        if (equals != std::string::npos)
            value = it->substr(equals + 1);
        const bool has_value = equals != std::string::npos;
        if (has_value && option->value.empty())
            collected.refuse(name, "takes no value");
        if (!has_value && !option->value.empty()) {
            if (std::next(it) == arguments.end()) {
                collected.refuse(name, "wants a value: " + std::string(option->value));
                break;
            }
            value = *++it;
        }
        option->take(collected, value);
    }
    AmpsimOptions& options = collected.options;
    if (collected.addresses.empty() && !options.help)
        collected.refuse("--address", "is missing");
    for (const int address : collected.addresses) {
        SimModel model = collected.model;
        model.address = address;
        model.serial += static_cast<long>(options.models.size());
        options.models.push_back(model);
    }
    return options;
}

std::string ampsim_usage() {
    std::string text =
        "ampsim: simulated amplifiers on a pseudo-terminal. The first line it prints is the device.\n\n"
        "Usage: ampsim --address N[,N...] [OPTION...]\n\n";
    for (const Option& option : k_options) text += help_line(option.name, option.value, option.help);
    text +=
        "\nFaults, read from standard input one a line and answered by \"ok\" or \"error: ...\";\n"
        "@ADDRESS in front picks one amplifier, else all are meant:\n\n";
    for (const Fault& fault : fault_table()) {
        const std::string number = fault.number != 0 ? "shutdown " + std::to_string(fault.number) + ": " : "";
        text += help_line(fault.name, fault.arguments, number + std::string(fault.help));
    }
    return text;
}

}  // namespace ampdesk::demo
