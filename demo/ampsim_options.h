// The arguments of ampsim.
#pragma once

#include <string>
#include <vector>

#include "demo/sim_model.h"
#include "platform/clock.h"

namespace ampdesk::demo {

struct AmpsimOptions {
    std::vector<SimModel> models;     // one for each address
    Duration byte_time{};             // at --baud, ten bits a byte; 0 without it
    std::string link;                 // empty: no link
    std::vector<std::string> faults;  // fault command lines, in their order
    bool help = false;
    std::string error;  // not empty: what is wrong with the arguments
};

// `arguments` without the program's name. A value stands in the next argument or behind "=".
AmpsimOptions parse_ampsim_options(const std::vector<std::string>& arguments);

// The options and the table of faults.
std::string ampsim_usage();

}  // namespace ampdesk::demo
