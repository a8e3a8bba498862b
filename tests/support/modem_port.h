// A scripted port with a modem behind it: modem lines, counts and DTR as the test sets them, and a
// driver that takes only so much output.
#pragma once

#include <algorithm>
#include <limits>
#include <utility>

#include "tests/support/scripted_port.h"

namespace ampdesk {

class ModemPort : public ScriptedPort {
  public:
    explicit ModemPort(ManualClock& clock) : ScriptedPort(clock), clock_(clock) {}

    std::optional<std::size_t> write_some(std::string_view bytes) override {
        if (!is_connected())
            return std::nullopt;
        const std::size_t taken = std::min(room, bytes.size());
        room -= taken;
        sent += bytes.substr(0, taken);
        return taken;
    }
    void discard_input() override {
        ++discards;
        read_waiting();
    }
    std::optional<ModemLines> modem_lines() override { return lines; }
    std::optional<LineCounts> line_counts() override { return counts; }
    bool set_dtr(bool on) override {
        if (has_dtr)
            dtr.emplace_back(clock_.now(), on);
        return has_dtr;
    }
    bool drain(Instant) override { return drained; }

    // Unplugged or back, as the driver's port tells it.
    void plug(bool in) {
        unplugged = !in;
        on_connection_change(in);
    }

    std::size_t room = std::numeric_limits<std::size_t>::max();  // what the driver still takes
    std::string sent;
    int discards = 0;
    std::optional<ModemLines> lines;
    std::optional<LineCounts> counts;
    bool has_dtr = false;
    std::vector<std::pair<Instant, bool>> dtr;
    bool drained = true;

  private:
    ManualClock& clock_;
};

}  // namespace ampdesk
