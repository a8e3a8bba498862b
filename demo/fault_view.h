// What is to be seen of the faults of one simulated amplifier. Texts are Latin-1.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ampdesk::demo {

struct FaultView {
    std::optional<int> unit_address{};  // nothing: no simulated amplifier is meant
    std::string who{};
    struct Active {
        std::string title{};
        std::string clear{};  // the command line that ends it
        bool operator==(const Active&) const = default;
    };
    std::vector<Active> faults{};
    bool operator==(const FaultView&) const = default;
};

}  // namespace ampdesk::demo
