// Follows the bus line: says in the status label when it is lost, back or given up, and which one it is for
// whoever keeps a copy.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "station/head_talk.h"
#include "station/station.h"

namespace ampdesk {

class LineWatch {
  public:
    // Takes the bus port's on_connection_change until its end. `tell` is called with every state that differs
    // from the last.
    LineWatch(BusLink& bus, const Station& station, Operator& person,
              std::function<void(const notice::LineState&)> tell);
    ~LineWatch();
    LineWatch(const LineWatch&) = delete;
    LineWatch& operator=(const LineWatch&) = delete;

    // To be called after everything that may have changed the line.
    void step(bool rs422_mode);

  private:
    void connection_changed(bool connected);
    void follow_lost_line();

    BusLink& bus_;
    const Station& station_;
    Operator& operator_;
    std::function<void(const notice::LineState&)> tell_;
    std::string lost_;  // the line that the status label calls lost
    std::optional<notice::LineState> told_;
};

}  // namespace ampdesk
