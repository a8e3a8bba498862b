// The event and error codes of the terminal's port: what each is called and how it is reported, and
// which of them the driver's counters tell.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/serial_port.h"

namespace ampdesk {

enum class EventKind {
    ignored,
    status,  // a text for the status label
    error,   // a beep and a box that offers to close the port
};

struct PortEvent {
    std::string_view text;
    EventKind kind = EventKind::ignored;
};

inline constexpr int k_event_send = 1;
inline constexpr int k_event_receive = 2;
inline constexpr int k_event_cts = 3;
inline constexpr int k_event_dsr = 4;
inline constexpr int k_event_carrier = 5;
inline constexpr int k_event_ring = 6;
inline constexpr int k_event_end_of_file = 7;
inline constexpr int k_event_break = 1001;
inline constexpr int k_event_cts_timeout = 1002;
inline constexpr int k_event_framing = 1004;
inline constexpr int k_event_overrun = 1005;
inline constexpr int k_event_receive_overflow = 1007;
inline constexpr int k_event_parity = 1008;
inline constexpr int k_event_transmit_full = 1009;

// Framing and parity errors are reported as a status on purpose. A code of no event is an error.
PortEvent describe_event(int code);

// What a device tells of itself; either may be missing.
struct LineState {
    std::optional<ModemLines> lines;
    std::optional<LineCounts> counts;
    bool any() const { return lines || counts; }
};

LineState read_line_state(SerialPort& port);

// The codes of what has happened between two looks, each once, modem lines first. Edges that came and
// went between the looks are seen where the driver counts them.
std::vector<int> events_between(const LineState& before, const LineState& now);

}  // namespace ampdesk
