// What is spoilt on purpose about one simulated amplifier: on the line, and in what it says. The
// named faults set these fields; see faults.h.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "demo/sim_tube.h"

namespace ampdesk::demo {

// How its replies travel. Applied by the bus.
struct LineFaults {
    bool silent = false;                          // it neither hears nor answers
    int noisy_replies = 0;                        // so many next replies come behind stray bytes
    int bad_crc_replies = 0;                      // so many next binary replies have a wrong CRC
    std::chrono::milliseconds delay{0};           // every reply comes so much later
    std::chrono::milliseconds late{0};            // the next reply only comes so much later
    std::chrono::milliseconds drip{0};            // gap between the bytes of every reply
    std::optional<std::uint8_t> wrong_address{};  // second header byte in place of the unit address
};

// What its replies hold. Applied by the amplifier.
struct ContentFaults {
    int refuse_code = 0;                                // every setting is refused with it, unless 0
    std::array<std::optional<std::uint8_t>, 7> status;  // forced status characters, from 1
    std::array<std::optional<std::uint16_t>, k_analog_words + 1> analog;  // forced words, from 1
    std::size_t short_words = 0;  // the analog and limits blocks end after so many words, unless 0
    bool overflow_words = false;  // every analog word gets the top bit
    std::string alarm;            // text of a forced alarm
};

}  // namespace ampdesk::demo
