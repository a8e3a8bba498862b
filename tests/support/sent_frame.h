// Takes apart a command frame that the station has sent. The station's own frames are sound; nothing is
// checked.
#pragma once

#include <string>
#include <string_view>

#include "buslink/wire/control_characters.h"

namespace ampdesk {

struct SentFrame {
    int address = 0;
    bool text = false;    // came in a text frame
    std::string command;  // without head and tail of the frame

    // Changes something in the amplifier.
    bool setting() const { return command.starts_with('\x10') || command.starts_with("SBAND"); }
};

inline SentFrame sent_frame(std::string_view frame) {
    if (frame[0] == k_soh)
        return {static_cast<unsigned char>(frame[1]), false, std::string(frame.substr(3, frame.size() - 5))};
    return {(frame[2] - '0') * 10 + frame[3] - '0', true, std::string(frame.substr(5, frame.size() - 9))};
}

}  // namespace ampdesk
