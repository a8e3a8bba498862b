// A line that spoils requests and replies and brings what nobody asked for: which fault hits, and which bytes
// arrive when. Knows of a frame only that its last two bytes are its CRC.
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

// What an amplifier hears of a request.
enum class RequestFault : std::size_t {
    none,
    lost,     // nothing
    cut_off,  // its first bytes
    garbled,  // one byte is another one, any of them
};
inline constexpr std::array<std::string_view, 4> k_request_fault_names = {"none", "lost", "cut off",
                                                                          "garbled"};

// What else is on the line.
enum class Stray : std::size_t {
    none,
    garbage,        // up to a dozen random bytes right before the request
    echo,           // the station hears its own request
    echo_part,      // … the first bytes of it
    other_command,  // before the reply another amplifier's sound one to another command
    other_address,  // … to the same command
    noise,          // random bytes after the reply, when nobody speaks or into what comes next
};
inline constexpr std::array<std::string_view, 7> k_stray_names = {"none",
                                                                  "garbage before the request",
                                                                  "own echo",
                                                                  "own echo in part",
                                                                  "reply to another command",
                                                                  "reply of another amplifier",
                                                                  "noise at rest"};

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
    LineFault draw() { return static_cast<LineFault>(draw(counts)); }

    // The same for a request, and for what else is on the line; each hits that many of a hundred, too.
    RequestFault draw_request() { return static_cast<RequestFault>(draw(request_counts)); }
    Stray draw_stray() { return static_cast<Stray>(draw(stray_counts)); }

    // What is left of the request.
    std::string heard(RequestFault fault, std::string_view request);

    std::string random_bytes(int least, int most);

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
    std::array<long, k_request_fault_names.size()> request_counts{};
    std::array<long, k_stray_names.size()> stray_counts{};
    Duration byte_time() const { return byte_time_; }
    int percent() const { return percent_; }
    void set_percent(int percent) { percent_ = percent; }

  private:
    template <std::size_t N>
    std::size_t draw(std::array<long, N>& tally) {
        const bool hit = number(1, 100) <= percent_;
        const auto fault = static_cast<std::size_t>(hit ? number(1, static_cast<int>(N) - 1) : 0);
        ++tally[fault];
        return fault;
    }
    void change(char& byte);

    std::mt19937 random_;
    int percent_;
    Duration byte_time_;
};

}  // namespace ampdesk::bench
