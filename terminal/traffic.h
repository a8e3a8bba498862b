// What went over the amplifier bus and the terminal line: the last entries in a ring, a filter, and
// their rendering in hexadecimal and text.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace ampdesk {

enum class TrafficLine { bus, terminal };

// A stretch of bytes as it went out or came in. It may be looked at later than that.
struct TrafficChunk {
    TrafficLine line = TrafficLine::bus;
    bool sent = false;
    int unit = 0;  // address spoken to; of the bus only
    std::string bytes{};
    CivilTime time{};
    Instant at{};
};

struct TrafficEntry {
    CivilTime time;  // of its first byte
    TrafficLine line = TrafficLine::bus;
    bool sent = false;
    int unit = 0;  // address spoken to; of the bus only
    std::string bytes;
};

struct TrafficFilter {
    std::optional<TrafficLine> line = {};
    std::optional<int> unit = {};  // the terminal has none, so it is left out
    std::optional<bool> sent = {};
    std::string text = {};  // in the hexadecimal ("01 11") or the text form, in either case; empty: any

    bool passes(const TrafficEntry& entry) const;
    bool operator==(const TrafficFilter&) const = default;
};

class TrafficLog {
  public:
    static constexpr std::size_t k_entries = 10'000;
    static constexpr std::size_t k_entry_bytes = 256;
    static constexpr std::chrono::milliseconds k_together{30};

    // Bytes that follow their like within k_together join the last entry, as far as it has room and has not
    // been called settled, so that a frame that came in in pieces is one entry. Longer ones are cut into
    // several.
    void add(const TrafficChunk& chunk);

    // Entries are numbered in the order of their coming; kept are those from first() to below
    // end(). Those below settled_end() do not grow any more.
    std::uint64_t first() const { return first_; }
    std::uint64_t end() const { return first_ + entries_.size(); }
    std::uint64_t settled_end(Instant now);
    const TrafficEntry& entry(std::uint64_t number) const { return entries_[number - first_]; }

    void clear();

  private:
    bool open(Instant at) const { return !entries_.empty() && !settled_ && at - last_ <= k_together; }

    std::deque<TrafficEntry> entries_;
    std::uint64_t first_ = 0;
    Instant last_{};        // when bytes came last
    bool settled_ = false;  // the last entry has been called so
};

// One line for 16 bytes: time of day, line, direction, bytes in hexadecimal, the printable ones as
// text with "." for the others. Lines after the first carry the bytes only.
std::vector<std::string> traffic_lines(const TrafficEntry& entry);

// The lines of all entries that pass, below a heading with the date and time of `now`.
std::vector<std::string> traffic_file(const TrafficLog& log, const TrafficFilter& filter,
                                      const CivilTime& now);

}  // namespace ampdesk
