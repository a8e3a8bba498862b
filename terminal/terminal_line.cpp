#include "terminal/terminal_line.h"

#include <utility>

namespace ampdesk {

TerminalLine::TerminalLine(SerialPort* port, Clock& clock) : port_(port), clock_(clock) {
    if (port_ != nullptr)
        port_->on_connection_change = [this](bool) {
            output_.clear();  // what was typed before an unplugging is not for whoever is there after it
            changed();
        };
}

TerminalLine::~TerminalLine() {
    if (port_ != nullptr)
        port_->on_connection_change = nullptr;
}

PortResult TerminalLine::open(const PortSettings& settings) {
    close();
    settings_ = settings;
    if (port_ == nullptr)
        return {PortError::not_found, "The demonstration has no terminal port"};
    PortResult result = port_->open(settings);
    if (result.ok())
        changed();
    return result;
}

void TerminalLine::close() {
    if (!is_open())
        return;
    output_.clear();
    discarded_ = true;
    port_->close();
    changed();
    if (taken_) {
        const LineHolder holder = std::move(holder_);
        release();
        if (holder.ended)
            holder.ended();
    }
}

bool TerminalLine::is_open() const {
    return port_ != nullptr && port_->is_open();
}

bool TerminalLine::is_connected() const {
    return is_open() && port_->is_connected();
}

std::size_t TerminalLine::room() const {
    return is_connected() ? k_output_limit - output_.size() : 0;
}

bool TerminalLine::send(std::string_view bytes) {
    if (bytes.size() > room())
        return false;
    output_ += bytes;
    send_on();
    return is_connected();
}

void TerminalLine::send_on() {
    if (output_.empty() || !is_connected())
        return;
    const auto taken = port_->write_some(output_);
    if (!taken || *taken == 0)
        return;
    const std::string gone = output_.substr(0, *taken);
    output_.erase(0, *taken);
    tell({.sent = true, .bytes = gone});
}

bool TerminalLine::output_left() {
    return !is_connected() || (output_.empty() && port_->drain(clock_.now()));
}

void TerminalLine::pump() {
    if (pumping_ || !is_open())
        return;
    pumping_ = true;
    discarded_ = false;
    const std::string bytes = port_->read_waiting();
    for (std::size_t at = 0; at < bytes.size() && !discarded_; at += k_chunk)
        hand_on(std::string_view(bytes).substr(at, k_chunk));
    send_on();
    pumping_ = false;
}

void TerminalLine::hand_on(std::string_view chunk) {
    tell({.sent = false, .bytes = chunk});
    if (!taken_) {
        if (on_received)
            on_received(chunk);
        return;
    }
    const auto received = holder_.received;  // lives on when the holder lets go within the call
    if (received)
        received(chunk);
}

void TerminalLine::discard_input() {
    discarded_ = true;
    if (is_open())
        port_->discard_input();
}

bool TerminalLine::take(LineHolder holder) {
    if (taken_ || !is_open())
        return false;
    holder_ = std::move(holder);
    taken_ = true;
    return true;
}

void TerminalLine::release() {
    taken_ = false;
    holder_ = {};
}

int TerminalLine::add_watcher(std::function<void(const TerminalTraffic&)> watcher) {
    watchers_.emplace(++last_watcher_, std::move(watcher));
    return last_watcher_;
}

void TerminalLine::remove_watcher(int id) {
    watchers_.erase(id);
}

void TerminalLine::tell(const TerminalTraffic& traffic) {
    for (const auto& [id, watcher] : watchers_) watcher(traffic);
}

void TerminalLine::changed() {
    if (on_change)
        on_change();
}

}  // namespace ampdesk
