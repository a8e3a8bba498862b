// What is to be seen of an nvRam transfer, and to be known of it by whoever shows it. Texts are Latin-1.
#pragma once

#include <cstdint>
#include <string>

namespace ampdesk {

struct NvramPanel {
    std::int16_t unit_address = 0;
    std::string caption{};
    std::string status_label{};
    std::string output_label{};
    std::string status{};
    std::string output{};  // the bytes of the last reply
    std::string start_caption = "Start";
    bool start_enabled = true;
    bool pause_enabled = false;
    bool under_way = false;  // begun, and not at its end; a pause does not end it
    bool operator==(const NvramPanel&) const = default;
};

}  // namespace ampdesk
