#include "station/line_watch.h"

#include <utility>

namespace ampdesk {

LineWatch::LineWatch(BusLink& bus, const Station& station, Operator& person,
                     std::function<void(const notice::LineState&)> tell)
    : bus_(bus), station_(station), operator_(person), tell_(std::move(tell)) {
    bus_.port().on_connection_change = [this](bool connected) { connection_changed(connected); };
}

LineWatch::~LineWatch() {
    bus_.port().on_connection_change = nullptr;
}

void LineWatch::connection_changed(bool connected) {
    const auto used = bus_.settings();
    if (!used)
        return;
    lost_ = connected ? std::string() : used->port_name;
    operator_.show_status(used->port_name +
                          (connected ? " connected again" : " connection lost, trying again"));
}

// A lost line that has been given up for another one, or closed, says nothing of that itself.
void LineWatch::follow_lost_line() {
    if (lost_.empty() || (bus_.port().is_open() && !bus_.port().is_connected()))
        return;
    const std::string lost = std::exchange(lost_, {});
    const auto used = bus_.settings();
    operator_.show_status(used ? used->port_name + " connected" : lost + " closed");
}

void LineWatch::step(bool rs422_mode) {
    follow_lost_line();
    const notice::LineState now{bus_.settings(), station_.last_address(), rs422_mode};
    if (told_ == now)
        return;
    told_ = now;
    tell_(now);
}

}  // namespace ampdesk
