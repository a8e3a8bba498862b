#include "tests/support/scripted_port.h"

#include <algorithm>

namespace ampdesk {

PortResult ScriptedPort::open(const PortSettings& settings) {
    opened.push_back(settings);
    open_ = open_result.ok();
    return open_result;
}

PortError ScriptedPort::write(std::string_view bytes, Instant) {
    if (unplugged)
        return PortError::lost;
    if (write_error != PortError::none)
        return write_error;
    written.emplace_back(bytes);
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

void ScriptedPort::silence(int times) {
    for (int i = 0; i < times; ++i) answers_.emplace_back();
}

void ScriptedPort::arrive(std::string bytes, std::chrono::milliseconds after) {
    due_.emplace(clock_.now() + after, std::move(bytes));
}

std::string ScriptedPort::read_waiting() {
    std::string bytes;
    const auto end = due_.upper_bound(clock_.now());
    for (auto due = due_.begin(); due != end; due = due_.erase(due)) bytes += due->second;
    return bytes;
}

WaitResult ScriptedPort::wait_readable(Instant deadline) {
    if (unplugged)
        return WaitResult::lost;
    if (!due_.empty() && due_.begin()->first <= std::max(clock_.now(), deadline)) {
        clock_.sleep_until(due_.begin()->first);
        return WaitResult::data;
    }
    clock_.sleep_until(deadline);
    return WaitResult::timed_out;
}

}  // namespace ampdesk
