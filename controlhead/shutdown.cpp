#include "controlhead/shutdown.h"

#include <string>

#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

// The display tick leaves the display alone until the shutdown is over; then the status screen is
// drawn from scratch.
void end_modes(Head& head) {
    head.sub_menu = k_no_sub_menu;
    head.gain_mode = false;
    head.warnings.warn_editing = false;
    if (head.menu_ptr == 0)
        head.menu_ptr = 1;
    rest_markers(head);
    head.panel.hide_scroll();
    head.panel.set_gauge(std::nullopt);  // nothing is measured meanwhile
    give_up_page_requests(head);
    head.comm_error_shown = false;
    head.shutdown_shown = true;
    head.redraw_request = true;
}

}  // namespace

void show_shutdown(Head& head, const Shutdown& shutdown) {
    lite_service(head, 0, 0);
    if (shutdown.number) {
        head.panel.set_line(1, "System Shutdown, #" + *shutdown.number);
        head.panel.set_line(2, "--------------------");
    }
    head.panel.set_line(3, shutdown.reason);
    head.panel.set_line(4, "                 OK");
    lite_service(head, 4, 1);
    head.faults.log_fault(head.services.clock.local_time(), shutdown.reason);
    end_modes(head);
    show_state_lamps(head);
}

}  // namespace ampdesk
