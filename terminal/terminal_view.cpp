#include "terminal/terminal_view.h"

namespace ampdesk {

bool line_free(const TerminalView& terminal, Operator& person) {
    if (!terminal.open)
        person.notify("The terminal's port is not open", "Modem > Settings opens it.");
    else if (!terminal.connected)
        person.notify("The terminal's port is not connected", terminal.port_name);
    else if (terminal.taken)
        person.notify("The terminal's port is in use by a file transfer");
    else if (terminal.hanging_up)
        person.show_status("Hanging up");
    else
        return true;
    return false;
}

}  // namespace ampdesk
