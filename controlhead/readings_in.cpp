#include "controlhead/readings_in.h"

#include <tuple>
#include <utility>

#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "controlhead/shutdown.h"
#include "controlhead/status_screens.h"

namespace ampdesk {

namespace {

// The legend of status screen 1 depends on it.
auto switch_legend(const Status& status) {
    return std::tuple(status.has_switch, status.switch_positions >= 1, status.switch_locked);
}

// What a shutdown or the communication error covers is drawn when they go.
bool display_is_free(const Head& head) {
    return !head.comm_error_shown && !in_shutdown(head);
}

void take_status(Head& head, const Status& status, Instant at) {
    const bool is_over = in_shutdown(head) && !status.in_shutdown;
    const bool other_legend = switch_legend(status) != switch_legend(head.status);
    head.status = status;
    head.status_at = at;
    updateLogic(head);
    if (is_over && head.menu_ptr != 0)  // its OK goes with it
        redraw_display(head);
    else if (other_legend && display_is_free(head))
        draw_fixed_rows(head);
}

template <class T>
bool keep(const Reading& reading, std::optional<T>& kept, Instant& kept_at) {
    const T* value = reading.get<T>();
    if (value == nullptr)
        return false;
    kept = *value;
    kept_at = reading.at;
    return true;
}

void take_good(Head& head, const Reading& reading) {
    if (std::exchange(head.link_fail_count, std::int16_t{0}) > 0 && head.comm_error_shown)
        redraw_display(head);
    if (const auto* status = reading.get<Status>())
        take_status(head, *status, reading.at);
    if (keep(reading, head.analog, head.analog_at) && display_is_free(head)) {
        show_gauge(head);
        place_bar(head);
    }
    if (keep(reading, head.alarm, head.alarm_at))
        updateLogic(head);
    keep(reading, head.limits, head.limits_at);
    const auto* shutdown = reading.get<Shutdown>();
    if (shutdown != nullptr && in_shutdown(head) && !head.shutdown_shown && !head.key_activity)
        show_shutdown(head, *shutdown);
}

// An entry that the log does not have is none of the line's failures.
bool tells_of_the_line(const Reading& reading) {
    const bool event = reading.request.kind == Request::Kind::event;
    return !reading.request.guess && !(event && reading.outcome == Reading::Outcome::unusable);
}

}  // namespace

void take_reading(Head& head, const Reading& reading) {
    if (!reading.good() && !reading.last_try)
        return;
    std::erase(head.requests, reading.request);
    if (reading.good())
        take_good(head, reading);
    else if (tells_of_the_line(reading))
        Error_handler_local(head, RunTimeError::no_answer());
    if (reading.request.kind == Request::Kind::band)
        take_band(head, reading);
    if (!display_is_free(head))
        return;
    if (const auto take = screen_of(head).take)
        take(head, reading);
    attempted([&] { update_menu(head); });
}

}  // namespace ampdesk
