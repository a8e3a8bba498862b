// What every control head needs from the rest of the program, made once and shared.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "amplifier/readings.h"
#include "buslink/bus_link.h"
#include "platform/clock.h"
#include "platform/operator.h"

namespace ampdesk {

// Rearranges the revision text of the identity block: a regular expression and its replacement.
struct IdentityPattern {
    std::string pattern;
    std::string replacement;
};

struct HeadOptions {
    std::string folder = ".";          // the program's folder: settings and amplifier files
    std::string shipped_folder = ".";  // where "mhelp.txt" stands when the folder has none
    NegativeWords negative_words = NegativeWords::overflow;
    // Band capability 0..4 of the maker's own model designations.
    std::map<std::string, int> model_capabilities{};
    std::vector<IdentityPattern> identity_patterns{};
};

struct HeadServices {
    BusLink& bus;
    Clock& clock;
    Operator& person;
    HeadOptions options;
};

}  // namespace ampdesk
