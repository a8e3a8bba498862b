// Everything of the station that has no window, in one object: it is told what people do, tells what is to be
// seen, and lives by step(). It belongs to one thread at a time; only the queues of its talk are shared.
#pragma once

#include <vector>

#include "station/head_service.h"
#include "station/line_watch.h"
#include "station/notified_operator.h"
#include "station/setup_service.h"
#include "station/simulator_service.h"
#include "station/station.h"
#include "station/talk.h"
#include "station/terminal_service.h"
#include "station/tool_service.h"

namespace ampdesk {

// The lines; the terminal's is null where it has none, and the simulator where the amplifiers are real ones.
struct StationLines {
    SerialPort& bus;
    SerialPort* terminal = nullptr;
    Simulator* simulator = nullptr;
};

struct StationHostOptions {
    BusOptions bus{};
    HeadOptions heads{};
};

class StationHost {
  public:
    // How long the keys that were pressed before the end may take to be carried out.
    static constexpr std::chrono::milliseconds k_last_keys{3500};

    // All references outlive the host.
    StationHost(Talk& talk, const StationLines& lines, Clock& clock, const StationHostOptions& options);

    // Takes what has come in the queue and on the line, does what there is to do, and returns when there is
    // more, at the latest. It waits for nothing. Whatever comes in before that is a reason to call it sooner.
    Instant step();

    // Whose input is such a reason.
    const std::vector<SerialPort*>& ports() const { return ports_; }

    // Finish has been carried out: nothing is open any more, and step() does nothing.
    bool finished() const { return stage_ == Stage::finished; }

    // For whoever calls step() himself.
    Station& station() { return station_; }
    BusLink& bus() { return bus_; }
    HeadServices& services() { return services_; }
    TerminalService& terminal() { return terminal_; }

  private:
    enum class Stage { running, finishing, finished };

    void take(const HeadAct& act) { heads_.take(act); }
    void take(const TerminalAct& act) { terminal_.take(act); }
    void take(const ToolAct& act) { tools_.take(act); }
    void take(const SetupAct& act) { setups_.take(act); }
    void take(const SimulatorAct& act) { simulator_.take(act); }
    void take(const PersonAct& act);
    void take(const ProgramAct& act);
    void on(const act::Start& start);
    void on(const act::Finish& finish);
    void step_finish();
    Instant due(Instant next);

    Mailbox<Act>& acts_;
    Mailbox<Notice>& notices_;
    Clock& clock_;
    const std::vector<SerialPort*> ports_;
    NotifiedOperator person_{notices_};
    BusLink bus_;
    HeadServices services_;
    Station station_{services_};
    HeadService heads_;
    LineWatch line_watch_;
    TerminalService terminal_;
    ToolService tools_;
    SetupService setups_;
    SimulatorService simulator_;
    Stage stage_ = Stage::running;
    Instant finish_by_{};
    act::Finish finish_;
};

}  // namespace ampdesk
