// A serial port in memory. A test prepares what comes back after each write and when, sees what was
// written, and can make the port fail, stall or vanish. It waits on the manual clock, so a time-out
// of a second costs nothing.
#pragma once

#include <algorithm>
#include <deque>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/serial_port.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {

class ScriptedPort : public SerialPort {
  public:
    // Bytes that arrive that long after the write they answer.
    struct Arrival {
        std::chrono::milliseconds after{0};
        std::string bytes;
    };
    using Answer = std::vector<Arrival>;

    explicit ScriptedPort(ManualClock& clock) : clock_(clock) {}

    PortResult open(const PortSettings& settings) override {
        opened.push_back(settings);
        const bool absent = !absent_device.empty() && settings.device == absent_device;
        open_ = open_result.ok() && !absent;
        return absent ? PortResult{PortError::not_found, settings.device + " is not there"} : open_result;
    }
    void close() override { open_ = false; }
    bool is_open() const override { return open_; }
    bool is_connected() const override { return open_ && !unplugged; }
    PortError write(std::string_view bytes, Instant) override {
        if (!is_connected())
            return PortError::lost;
        written.emplace_back(bytes);
        idle_waits_ = 0;
        Answer arrivals;
        if (!answers_.empty()) {
            arrivals = std::move(answers_.front());
            answers_.pop_front();
        } else if (responder) {
            arrivals = responder(written.back());
        }
        for (Arrival& a : arrivals) arrive(std::move(a.bytes), a.after);
        return PortError::none;
    }
    std::string read_waiting() override {
        std::string bytes;
        const auto end = due_.upper_bound(clock_.now());
        for (auto due = due_.begin(); due != end; due = due_.erase(due)) bytes += due->second;
        return bytes;
    }
    WaitResult wait_readable(Instant deadline) override {
        const Instant start = clock_.now();
        const bool arrives = !due_.empty() && due_.begin()->first <= std::max(start, deadline);
        if (!unplugged)
            clock_.sleep_until(arrives ? due_.begin()->first : deadline);
        if (clock_.now() == start && ++idle_waits_ > 10'000)
            throw std::runtime_error("waits that take no time, without end");  // fails where it would hang
        return unplugged ? WaitResult::lost : arrives ? WaitResult::data : WaitResult::timed_out;
    }
    std::optional<Instant> input_due() const override {
        return is_connected() && !due_.empty() ? std::optional(due_.begin()->first) : std::nullopt;
    }

    // The answer to the next write that has none yet; an empty one is silence.
    void answer(Answer arrivals) { answers_.push_back(std::move(arrivals)); }
    void answer(std::string bytes) { answers_.push_back({{std::chrono::milliseconds(0), std::move(bytes)}}); }
    void silence(int times = 1) { answers_.resize(answers_.size() + static_cast<std::size_t>(times)); }

    // When no prepared answer is left, this is asked; without it there is silence.
    std::function<Answer(const std::string& written)> responder;

    // Bytes on the line that answer nothing, that long from now.
    void arrive(std::string bytes, std::chrono::milliseconds after = std::chrono::milliseconds(0)) {
        due_.emplace(clock_.now() + after, std::move(bytes));
    }

    std::vector<std::string> written;
    std::vector<PortSettings> opened;
    PortResult open_result;     // what the next open() gives
    std::string absent_device;  // … but for this one, which is not found
    bool unplugged = false;     // waits and writes then report `lost`

  private:
    ManualClock& clock_;
    bool open_ = false;
    int idle_waits_ = 0;  // since the last write, that took no time
    std::deque<Answer> answers_;
    std::multimap<Instant, std::string> due_;
};

}  // namespace ampdesk
