// A whole station as in desk.h, with a modem at the terminal's line.
#pragma once

#include "tests/support/modem_port.h"
#include "tests/windows/desk.h"

namespace ampdesk {

// There before the window.
struct FarModem {
    ManualClock line_clock;
    ModemPort modem{line_clock};
};

class ModemDesk : protected FarModem, public Desk {
  protected:
    ModemDesk() : Desk(&modem) {}

    void start(const std::string& lines = "2\r\n") {
        folder.put("ampdesk.dat", "ampdesk settings\r\n" + lines);
        form.load();
        settle();
    }
    void receive(std::string bytes) {
        modem.arrive(std::move(bytes));
        settle();
    }
    std::string take_sent() { return std::exchange(modem.sent, {}); }
};

}  // namespace ampdesk
