// Everything of the station that has no window, in one object: it is told what people do, tells what is to be
// seen, and lives by step(). It belongs to one thread at a time; only the queues of its talk are shared.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include "station/head_service.h"
#include "station/line_watch.h"
#include "station/notified_operator.h"
#include "station/station.h"
#include "station/talk.h"

namespace ampdesk {

struct StationHostOptions {
    BusOptions bus{};
    HeadOptions heads{};
};

class StationHost {
  public:
    // How long the keys that were pressed before the end may take to be carried out.
    static constexpr std::chrono::milliseconds k_last_keys{3500};

    // All references outlive the host.
    StationHost(Talk& talk, SerialPort& bus_port, Clock& clock, const StationHostOptions& options);

    // Takes what has come in the queue and on the line, does what there is to do, and returns when there is
    // more, at the latest. It waits for nothing. Whatever comes in before that is a reason to call it sooner.
    Instant step();

    // Whose input is such a reason.
    std::array<SerialPort*, 1> ports() { return {&bus_.port()}; }

    // Finish has been carried out: nothing is open any more, and step() does nothing.
    bool finished() const { return stage_ == Stage::finished; }

    // For whoever calls step() himself.
    Station& station() { return station_; }
    BusLink& bus() { return bus_; }
    HeadServices& services() { return services_; }

    std::function<void()> on_started;

  private:
    enum class Stage { running, finishing, finished };

    void take(const HeadAct& act) { heads_.take(act); }
    void take(const PersonAct& act);
    void take(const ProgramAct& act);
    void on(const act::Start& start);
    void on(const act::Finish& finish);
    void step_finish();

    Mailbox<Act>& acts_;
    Mailbox<Notice>& notices_;
    Clock& clock_;
    NotifiedOperator person_{notices_};
    BusLink bus_;
    HeadServices services_;
    Station station_{services_};
    HeadService heads_;
    LineWatch line_watch_;
    Stage stage_ = Stage::running;
    Instant finish_by_{};
    act::Finish finish_;
};

}  // namespace ampdesk
