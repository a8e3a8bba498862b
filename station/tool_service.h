// The service tools on the station's side: one nvRam transfer at a time, and the command console.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "station/tool_talk.h"

namespace ampdesk {

class Station;

class ToolService {
  public:
    // A notice with a key is a state of which only the newest counts; one without is told in its turn.
    using Tell = std::function<void(std::string key, ToolNotice notice)>;

    ToolService(Station& station, BusLink& bus, Operator& person, Tell tell);
    ~ToolService();
    ToolService(const ToolService&) = delete;
    ToolService& operator=(const ToolService&) = delete;

    void take(const ToolAct& act);

    // Lets go of a transfer that has given itself up.
    void step();
    std::optional<Instant> due() const;

    // Whatever it has come to; its file is closed.
    void end_transfer();

  private:
    void on(const act::BeginNvram& begin);
    void on(const act::StartNvram& start);
    void on(const act::PauseNvram& pause);
    void on(const act::ExitNvram& exit);
    void on(const act::SendConsoleCommand& command);
    void tell_state();

    Station& station_;
    BusLink& bus_;
    Operator& operator_;
    Tell tell_;
    Console console_;
    std::unique_ptr<NvramTransfer> transfer_;
};

}  // namespace ampdesk
