#include "demo/sim_port.h"

namespace ampdesk::demo {

PortResult SimPort::open(const PortSettings&) {
    close();
    open_ = true;
    return {};
}

void SimPort::close() {
    open_ = false;
    bus_.drop_pending();
}

PortError SimPort::write(std::string_view bytes, Instant) {
    if (!open_)
        return PortError::failed;
    bus_.receive(bytes);
    return PortError::none;
}

std::string SimPort::read_waiting() {
    return open_ ? bus_.take_due() : std::string();
}

WaitResult SimPort::wait_readable(Instant deadline) {
    if (!open_)
        return WaitResult::lost;
    // What has arrived is reported even after the deadline.
    const auto due = bus_.next_due();
    if (due && (*due <= deadline || *due <= clock_.now())) {
        clock_.sleep_until(*due);
        return WaitResult::data;
    }
    clock_.sleep_until(deadline);
    return WaitResult::timed_out;
}

std::optional<Instant> SimPort::input_due() const {
    return open_ ? bus_.next_due() : std::nullopt;
}

}  // namespace ampdesk::demo
