// The terminal's serial port in the soak, with the remote station's end of the line: what the remote
// station says arrives at 9600 baud, what the terminal answers goes out as fast as the line takes it.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "bench/line_faults.h"
#include "platform/serial_port.h"

namespace ampdesk::bench {

class TerminalPort : public SerialPort {
  public:
    TerminalPort(Clock& clock, FaultyLine& chance) : clock_(clock), chance_(chance) {}

    PortResult open(const PortSettings&) override {
        open_ = true;
        return {};
    }
    void close() override { open_ = false; }
    bool is_open() const override { return open_; }
    bool is_connected() const override { return open_; }
    PortError write(std::string_view bytes, Instant) override {
        to_remote_ += bytes;
        return PortError::none;
    }
    // Sometimes nothing, sometimes a part.
    std::optional<std::size_t> write_some(std::string_view bytes) override {
        const auto room = static_cast<std::size_t>(chance_.one_in(4) ? chance_.number(0, 20) : 1000);
        bytes = bytes.substr(0, room);
        to_remote_ += bytes;
        return bytes.size();
    }
    std::string read_waiting() override {
        const auto end = arriving_.upper_bound(clock_.now());
        std::string bytes;
        for (auto it = arriving_.begin(); it != end; ++it) bytes += it->second;
        arriving_.erase(arriving_.begin(), end);
        return bytes;
    }
    WaitResult wait_readable(Instant) override { return WaitResult::timed_out; }
    std::optional<Instant> input_due() const override {
        return arriving_.empty() ? std::nullopt : std::optional(arriving_.begin()->first);
    }

    // The remote station's side. The bytes arrive in one piece, behind what was said before and after
    // that pause.
    void say(std::string_view bytes, Duration pause = {}) {
        constexpr std::chrono::microseconds k_byte_time{1042};
        last_ = std::max(last_, clock_.now()) + pause + static_cast<int>(bytes.size()) * k_byte_time;
        arriving_.emplace(last_, bytes);
    }
    std::string heard() { return std::exchange(to_remote_, {}); }

  private:
    Clock& clock_;
    FaultyLine& chance_;
    bool open_ = false;
    Instant last_{};
    std::multimap<Instant, std::string> arriving_;
    std::string to_remote_;
};

}  // namespace ampdesk::bench
