// A line that spoils replies: which fault hits a reply, and which bytes arrive when instead of it.
// Knows of a frame only that its last two bytes are its CRC.
#pragma once

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "buslink/wire/crc16.h"
#include "platform/clock.h"

namespace ampdesk::bench {

enum class LineFault : std::size_t {
    none,
    silence,     // no reply
    noise,       // up to a dozen random bytes, then the reply
    bad_crc,     // one byte of the reply is another one, any of them
    truncated,   // the reply breaks off
    late,        // it begins up to 1.5 s after the deadline
    duplicate,   // it comes a second time, up to 0.3 s after the first
    wrong_echo,  // a sound frame, but the byte that names the command is another one
    drip,        // up to 60 ms between its bytes
};
inline constexpr std::array<std::string_view, 9> k_fault_names = {
    "none", "silence", "noise before", "bad CRC", "truncated", "late", "duplicate", "wrong echo", "drip"};

// Bytes that arrive that long after the request has gone out.
struct Arrival {
    Duration after{};
    char byte = 0;
};

class FaultyLine {
  public:
    // That many of a hundred replies are hit. A byte takes `byte_time`.
    FaultyLine(unsigned seed, int percent, Duration byte_time)
        : random_(seed), percent_(percent), byte_time_(byte_time) {}

    // Draws a fault for the next reply and counts it.
    LineFault draw();

    struct Frame {
        std::string_view bytes;
        std::size_t echo_at = 0;       // offset of the byte that names the command
        const Crc16* crc = nullptr;    // null for a frame without one
        Duration deadline{};           // of whoever waits for it
        std::size_t request_size = 0;  // bytes of the request, which go first
    };
    // In the order of their arrival.
    std::vector<Arrival> arrivals(LineFault fault, const Frame& frame);

    // Evenly spread from low to high, both included.
    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool one_in(int many) { return number(1, many) == 1; }

    std::array<long, k_fault_names.size()> counts{};
    int percent() const { return percent_; }
    void set_percent(int percent) { percent_ = percent; }

  private:
    std::mt19937 random_;
    int percent_;
    Duration byte_time_;
};

}  // namespace ampdesk::bench
