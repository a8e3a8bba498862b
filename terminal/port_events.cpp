#include "terminal/port_events.h"

namespace ampdesk {

PortEvent describe_event(int code) {
    using enum EventKind;
    switch (code) {
        case k_event_send:
        case k_event_receive:
            return {};
        case k_event_cts:
            return {"Change in CTS Detected", status};
        case k_event_dsr:
            return {"Change in DSR Detected", status};
        case k_event_carrier:
            return {"Change in CD Detected", status};
        case k_event_ring:
            return {"The Phone is Ringing", status};
        case k_event_end_of_file:
            return {"End of File Detected", status};
        case k_event_break:
            return {"Break Received", status};
        case k_event_cts_timeout:
            return {"CTS Timeout", error};
        case 1003:
            return {"DSR Timeout", error};
        case k_event_framing:
            return {"Framing Error", status};
        case k_event_overrun:
            return {"Overrun Error", error};
        case 1006:
            return {"Carrier Detect Timeout", error};
        case k_event_receive_overflow:
            return {"Receive Buffer Overflow", error};
        case k_event_parity:
            return {"Parity Error", status};
        case k_event_transmit_full:
            return {"Transmit Buffer Full", error};
        default:
            return {"Unknown error or event", error};
    }
}

LineState read_line_state(SerialPort& port) {
    return {.lines = port.modem_lines(), .counts = port.line_counts()};
}

std::vector<int> events_between(const LineState& before, const LineState& now) {
    std::vector<int> codes;
    const auto add = [&](int code, unsigned LineCounts::*count, bool ModemLines::*level = nullptr) {
        const bool counted = before.counts && now.counts && *before.counts.*count != *now.counts.*count;
        // A ring is told by its beginning, the others by either edge.
        const bool seen = level != nullptr && before.lines && now.lines &&
                          *before.lines.*level != *now.lines.*level &&
                          (code != k_event_ring || *now.lines.*level);
        if (counted || (!now.counts && seen))
            codes.push_back(code);
    };
    add(k_event_cts, &LineCounts::cts, &ModemLines::cts);
    add(k_event_dsr, &LineCounts::dsr, &ModemLines::dsr);
    add(k_event_carrier, &LineCounts::carrier, &ModemLines::carrier);
    add(k_event_ring, &LineCounts::ring, &ModemLines::ring);
    add(k_event_break, &LineCounts::breaks);
    add(k_event_framing, &LineCounts::framing);
    add(k_event_parity, &LineCounts::parity);
    add(k_event_overrun, &LineCounts::overrun);
    add(k_event_receive_overflow, &LineCounts::buffer_overrun);
    return codes;
}

}  // namespace ampdesk
