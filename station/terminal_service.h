// The terminal without its window: its port and settings, the session's log, file transfers, the watch over
// both lines, and what happens to output when the program ends. Takes what a person does and tells what is to
// be seen; nothing here waits.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "station/station.h"
#include "station/terminal_port.h"
#include "station/terminal_talk.h"
#include "station/transfer_service.h"
#include "terminal/session_log.h"
#include "terminal/terminal.h"

namespace ampdesk {

class TerminalService {
  public:
    // How long the end of the program waits for output to leave.
    static constexpr std::chrono::seconds k_finish_limit{3};

    // Without a port (the demonstration) the terminal never opens. A remote station's requests are the
    // station's guests. `tell` is given the newest state under the name of what it is the state of, and what
    // has happened under none.
    TerminalService(SerialPort* port, Station& station, HeadServices& services,
                    std::function<void(std::string key, TerminalNotice notice)> tell);
    ~TerminalService();
    TerminalService(const TerminalService&) = delete;
    TerminalService& operator=(const TerminalService&) = delete;

    // To be joined with what waits to be shown.
    std::function<void(std::string_view bytes)> on_text;
    std::function<void(TrafficChunk chunk)> on_traffic;

    // Reads "ampdesk.dat" when it is there. Throws what read_terminal_settings throws.
    void load_settings();

    // When the amplifiers are open: where both are set to the same port, they come first.
    void open_at_start();

    void take(const TerminalAct& act);

    // Reads what has come in and does what is due; to be called when something may have come in, and when
    // due() says so. What it leaves for the station is a guest's.
    void step();
    std::optional<Instant> due() const;

    // The end of the program: the log and the port are closed when the output has left, k_finish_limit later
    // at the latest, which is told.
    void begin_finish();
    bool finished() const { return finished_; }

    // To be waited on; null in the demonstration.
    SerialPort* port() const { return line_.port(); }

  private:
    void on(const act::TypeText& typed) { terminal_.type(typed.bytes); }
    void on(const act::ShowTerminal& shown) { visible_ = shown.visible; }
    void on(const act::UseTerminalSettings& chosen);
    void on(const act::ToggleAutoAnswer&);
    void on(const act::SetModemVolume& chosen);
    void on(const act::HangUp&);
    void on(const act::OpenLog& chosen);
    void on(const act::CloseLog&);
    void on(const act::BeginTransfer& wanted);
    void on(const act::EndTransfer&) { transfers_.end(); }
    void on(const act::CancelTransfer&) { transfers_.cancel(); }
    void on(const act::KeepReceivedFile& answer) { transfers_.keep(answer.path); }
    void on(const act::TestNullModem&);
    void on(const act::WatchTraffic& watch);

    void line_changed();
    void tell_error(std::string_view text);
    void note(TrafficLine line, bool sent, int unit, std::string_view bytes);
    void step_finish();
    bool line_free();
    TerminalView view() const;
    void tell_state();

    Station& station_;
    BusLink& bus_;
    Clock& clock_;
    Operator& operator_;
    std::function<void(std::string, TerminalNotice)> tell_;
    TerminalLine line_;
    Terminal terminal_;
    TerminalPort port_;
    SessionLog log_;
    TransferService transfers_;
    std::optional<TerminalView> told_;
    std::optional<int> traffic_watcher_;  // while the lines are watched
    bool visible_ = true;
    int question_ = 0;  // about an error of the line; 0 while none is open
    std::optional<Instant> finish_by_;
    bool finished_ = false;
};

}  // namespace ampdesk
