#include "controlhead/comm_faults.h"

#include "controlhead/lamps.h"

namespace ampdesk {

namespace {

void show_lines(Head& head, const char* const (&lines)[4]) {
    for (int i = 0; i < 4; ++i) head.panel.set_line(i + 1, lines[i]);
}

}  // namespace

void DispCommError(Head& head, std::int16_t kind) {
    if (kind == 1 || kind == 2)
        head.link_kind = static_cast<LinkKind>(kind);
    if (head.link_kind == LinkKind::rs485)
        show_lines(head, {"RS485 Communication ", "Error,              ", "Check Connection    ", ""});
    else if (head.link_kind == LinkKind::modem)
        show_lines(head, {"Modem Connection    ", "Error, Hangup Modem,", "Then Try Connect    ",
                          "Again.              "});
    lite_service(head, 0, 0);
    head.panel.hide_scroll();
    head.panel.set_gauge(std::nullopt);
    head.requests.clear();  // the screen makes them anew when it comes back
    head.shutdown_shown = false;
    head.comm_error_shown = true;
}

void Error_handler_local(Head& head, const RunTimeError& error) {
    constexpr std::int16_t k_silent_failures = 2;
    if (error.number() == RunTimeError::k_no_answer) {
        if (++head.link_fail_count <= k_silent_failures)
            return;
        head.link_fail_count = k_silent_failures + 1;
        if (!head.comm_error_shown)
            DispCommError(head, 1);
        return;
    }
    if (++head.overflow_count <= k_silent_failures)
        return;
    head.overflow_count = 0;
    const ToldError told{head.menu_ptr, head.sub_menu, error.what(), error.detail()};
    if (head.told_error == told)
        return;
    head.told_error = told;
    head.tell(told.text, told.detail);
}

}  // namespace ampdesk
