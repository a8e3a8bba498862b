#include "station/terminal_service.h"

#include <algorithm>
#include <utility>

#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds k_look_for_output{50};  // that leaves, at the end

}  // namespace

TerminalService::TerminalService(SerialPort* port, Station& station, HeadServices& services,
                                 std::function<void(std::string key, TerminalNotice notice)> tell)
    : station_(station),
      bus_(services.bus),
      clock_(services.clock),
      operator_(services.person),
      tell_(std::move(tell)),
      line_(port, services.clock),
      terminal_(line_, services.bus, services.options.folder),
      port_(line_, services.bus, services.person, services.options.folder),
      log_(services.clock),
      transfers_(line_, services.person, [this](TerminalNotice notice) {
          const bool state = std::holds_alternative<notice::TransferState>(notice);
          tell_(state ? "transfer" : "", std::move(notice));
      }) {
    terminal_.is_visible = [this] { return visible_; };
    terminal_.on_text = [this](std::string_view text) {
        if (on_text)
            on_text(text);
    };
    terminal_.on_status = [this](std::string_view text) { operator_.show_status(text); };
    terminal_.on_error = [this](std::string_view text) { tell_error(text); };
    line_.on_change = [this] { line_changed(); };
    line_.add_watcher([this](const TerminalTraffic& traffic) { log_.note(traffic); });
    log_.on_failure = [this](const std::string& cause) {
        operator_.notify("The log has been closed", log_.path() + ": " + cause);
    };
    transfers_.on_over = [this] { port_.tell_line(); };
    station_.add_guest(terminal_);
}

TerminalService::~TerminalService() {
    on(act::WatchTraffic{false});
    station_.questions().withdraw(question_);
    station_.remove_guest(terminal_);
}

void TerminalService::load_settings() {
    port_.load_settings();
    tell_state();
}

void TerminalService::open_at_start() {
    port_.open_at_start();
    tell_state();
}

void TerminalService::take(const TerminalAct& act) {
    if (finished_)
        return;
    std::visit([this](const auto& done) { on(done); }, act);
    tell_state();
}

void TerminalService::step() {
    line_.pump();
    terminal_.tick();
    step_finish();
    transfers_.step();
    tell_state();
}

std::optional<Instant> TerminalService::due() const {
    std::optional<Instant> due = transfers_.due();
    const auto want = [&due](Instant at) { due = std::min(due.value_or(at), at); };
    if (const auto tick = terminal_.next_tick())
        want(clock_.now() + *tick);
    if (finish_by_ && !finished_)
        want(std::min<Instant>(*finish_by_, clock_.now() + k_look_for_output));
    return due;
}

bool TerminalService::line_free() {
    return ampdesk::line_free(view(), operator_);
}

// A transfer's line is not changed under it.
void TerminalService::on(const act::UseTerminalSettings& chosen) {
    if (line_.taken() && !line_free())
        return;
    port_.use(chosen.settings);
}

void TerminalService::on(const act::ToggleAutoAnswer&) {
    if (line_free())
        terminal_.modem().auto_answer();
}

void TerminalService::on(const act::SetModemVolume& chosen) {
    if (line_free())
        terminal_.modem().set_volume(chosen.volume);
}

void TerminalService::on(const act::HangUp&) {
    if (line_free())
        terminal_.hang_up();
}

void TerminalService::on(const act::OpenLog& chosen) {
    try {
        log_.open(chosen.path);
    } catch (const RunTimeError& error) {
        operator_.notify("The log could not be opened", chosen.path + ": " + error.what());
    }
}

void TerminalService::on(const act::CloseLog&) {
    try {
        log_.close();
    } catch (const RunTimeError& error) {
        operator_.notify("The log is not complete", log_.path() + ": " + error.what());
    }
}

void TerminalService::on(const act::BeginTransfer& wanted) {
    if (line_free())
        transfers_.begin(wanted);
}

void TerminalService::on(const act::TestNullModem&) {
    if (line_free())
        transfers_.test_null_modem();
}

void TerminalService::on(const act::WatchTraffic& watch) {
    if (watch.on == traffic_watcher_.has_value())
        return;
    if (!watch.on) {
        bus_.on_traffic = nullptr;
        line_.remove_watcher(*std::exchange(traffic_watcher_, std::nullopt));
        return;
    }
    bus_.on_traffic = [this](const BusTraffic& traffic) {
        note(TrafficLine::bus, traffic.sent, traffic.address, traffic.bytes);
    };
    traffic_watcher_ = line_.add_watcher([this](const TerminalTraffic& traffic) {
        note(TrafficLine::terminal, traffic.sent, 0, traffic.bytes);
    });
}

void TerminalService::note(TrafficLine line, bool sent, int unit, std::string_view bytes) {
    constexpr std::size_t k_piece = TrafficLog::k_entry_bytes;
    for (; on_traffic && !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), k_piece)))
        on_traffic(
            {line, sent, unit, std::string(bytes.substr(0, k_piece)), clock_.local_time(), clock_.now()});
}

void TerminalService::line_changed() {
    terminal_.line_changed();
    port_.tell_line();
}

void TerminalService::tell_error(std::string_view text) {
    if (question_ != 0)
        return;  // one box says it
    operator_.start_beep(milliseconds(0));
    Message message;
    message.text = text;
    message.buttons = Buttons::ok_cancel;
    message.title = "Click Cancel to quit, OK to ignore.";
    question_ = station_.questions().ask({.message = message}, [this](const Reply& reply) {
        question_ = 0;
        if (reply.answer == Answer::cancel)
            line_.close();
    });
}

void TerminalService::begin_finish() {
    if (finish_by_)
        return;
    finish_by_ = clock_.now() + k_finish_limit;
    transfers_.end();
    if (!line_.output_left())
        operator_.show_status("Waiting for the terminal's output to leave");
    step();
}

void TerminalService::step_finish() {
    if (!finish_by_ || finished_)
        return;
    const bool left = line_.output_left();
    if ((!left || transfers_.ending()) && clock_.now() < *finish_by_)
        return;
    if (!left)
        operator_.notify("Data cannot be sent");
    line_.close();
    on(act::CloseLog{});
    finished_ = true;
}

TerminalView TerminalService::view() const {
    return {.settings = port_.settings(),
            .port_name = port_.name(),
            .state = port_.state(terminal_.line_state()),
            .open = line_.is_open(),
            .connected = line_.is_connected(),
            .taken = line_.taken(),
            .hanging_up = terminal_.modem().hanging_up(),
            .answers = terminal_.modem().answers(),
            .log_open = log_.is_open(),
            .line = line_.settings(),
            .bus_line = bus_.settings()};
}

void TerminalService::tell_state() {
    TerminalView now = view();
    if (told_ == now)
        return;
    told_ = now;
    tell_("terminal", notice::TerminalState{std::move(now)});
}

}  // namespace ampdesk
