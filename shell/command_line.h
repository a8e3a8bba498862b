// The arguments of ampdesk.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ampdesk {

struct CommandLine {
    std::string folder;                              // empty: the default folder
    std::optional<int> demo;                         // number of simulated amplifiers, 1..99
    std::vector<std::pair<int, std::string>> ports;  // COM number 1..4 and its device
    bool version = false;
    bool help = false;
    std::vector<std::string> amplifier_files;  // 100 at most
    std::string error;                         // not empty: what is wrong with the arguments
};

// `arguments` without the program's name. What takes a value takes it behind "=" or as the next
// argument; "--" ends the options; files beyond the hundredth are left out. Parsing stops at the
// first error.
CommandLine parse_command_line(const std::vector<std::string>& arguments);

std::string usage_text();

}  // namespace ampdesk
