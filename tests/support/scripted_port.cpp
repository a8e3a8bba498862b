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
    const Instant at = clock_.now() + after;
    const auto later = std::find_if(due_.begin(), due_.end(), [&](const Due& d) { return d.at > at; });
    due_.insert(later, Due{at, std::move(bytes)});
}

std::string ScriptedPort::read_waiting() {
    std::string bytes;
    while (!due_.empty() && due_.front().at <= clock_.now()) {
        bytes += due_.front().bytes;
        due_.erase(due_.begin());
    }
    return bytes;
}

WaitResult ScriptedPort::wait_readable(Instant deadline) {
    if (unplugged)
        return WaitResult::lost;
    if (!due_.empty() && due_.front().at <= std::max(clock_.now(), deadline)) {
        clock_.sleep_until(due_.front().at);
        return WaitResult::data;
    }
    clock_.sleep_until(deadline);
    return WaitResult::timed_out;
}

}  // namespace ampdesk
