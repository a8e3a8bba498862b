#include "shell/ui/terminal_control.h"

#include <QAction>
#include <utility>

#include "platform/qt/text.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds k_close_step{50};
constexpr milliseconds k_drain_step{20};

}  // namespace

TerminalControl::TerminalControl(QMainWindow& window, TermBox& box, TerminalLine& line, Station& station,
                                 BusLink& bus, QtOperator& person,
                                 std::function<void(const QString&)> show_status)
    : window_(window),
      Term_(box),
      line_(line),
      station_(station),
      bus_(bus),
      person_(person),
      show_status_(std::move(show_status)),
      terminal_(line, bus),
      form2_(new Form2(&window)) {
    terminal_.is_visible = [this] { return Term_.isVisible(); };
    station_.add_guest(terminal_);
    terminal_.on_text = [this](std::string_view text) { Term_.ShowData(text); };
    terminal_.on_status = [this](std::string_view text) { show_status_(from_latin1(text)); };
    terminal_.on_turn = [this] { arm(); };
    terminal_.on_error = [this](std::string_view text) { tell_error(text); };
    Term_.on_typed = [this](std::string_view text) {
        const bool shown = terminal_.type(text);
        arm();
        return shown;
    };
    line_.on_change = [this] { line_changed(); };

    auto* keep_in_sight = new QAction(QStringLiteral("&Keep the Port in Sight"), &Term_);
    keep_in_sight->setObjectName(QStringLiteral("mnuForm2"));
    connect(keep_in_sight, &QAction::triggered, form2_, &Form2::show_on_top);
    Term_.add_menu_action(keep_in_sight);

    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &TerminalControl::tick);
    connect(&close_timer_, &QTimer::timeout, this, &TerminalControl::step_close);
    follow_state();
}

TerminalControl::~TerminalControl() {
    station_.remove_guest(terminal_);
    line_.on_change = nullptr;
    Term_.on_typed = nullptr;
}

// Boxes are never opened from within the port's own call.
void TerminalControl::later(std::function<void()> action) {
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}

void TerminalControl::load_settings() {
    if (file_exists(k_terminal_settings_file))
        settings_ = read_terminal_settings(k_terminal_settings_file);
    terminal_.echo = settings_.echo;
}

QString TerminalControl::port_name() const {
    return settings_.port ? QStringLiteral("COM%1:").arg(*settings_.port) : QStringLiteral("No port");
}

void TerminalControl::open_at_start() {
    if (!settings_.port || line_.port() == nullptr)
        return;
    const PortSettings wanted = port_settings(settings_, bus_.ports());
    for (const int number : bus_port_numbers(bus_.settings())) {
        if (bus_.ports().device(number) != wanted.device)
            continue;
        show_status_(port_name() +
                     QStringLiteral(" is used by the amplifier bus, the terminal stays closed"));
        return;
    }
    open_line(wanted);
}

void TerminalControl::use_settings(const TerminalSettings& chosen) {
    settings_ = chosen;
    terminal_.echo = chosen.echo;
    try {
        write_terminal_settings(k_terminal_settings_file, chosen);
    } catch (const RunTimeError& error) {
        person_.notify(error.what(), k_terminal_settings_file);
    }
    const PortSettings wanted = port_settings(chosen, bus_.ports());
    if (!chosen.port) {
        line_.close();
        return tell_line();
    }
    if (line_.is_open() && line_.settings() == wanted)
        return tell_line();
    const PortResult result = open_line(wanted);
    if (!result.ok())
        person_.notify("The terminal's port could not be opened", result.cause);
}

PortResult TerminalControl::open_line(const PortSettings& wanted) {
    PortResult result = line_.open(wanted);
    line_name_ = port_name();
    if (!result.ok())
        show_status_(line_name_ + u' ' + from_utf8(result.cause));
    return result;
}

// What is so of the line now replaces what was so, or has happened, before.
void TerminalControl::tell_line() {
    if (line_.is_open())
        line_name_ = port_name();
    if (line_name_.isEmpty())
        show_status_({});
    else if (!line_.is_open())
        show_status_(line_name_ + QStringLiteral(" closed"));
    else if (line_.is_connected())
        show_status_(line_name_ + QStringLiteral(" connected"));
    else
        show_status_(line_name_ + QStringLiteral(" connection lost, trying again"));
}

void TerminalControl::take_line_back() {
    tell_line();
    arm();
}

void TerminalControl::refresh() {
    follow_state();
    arm();
}

void TerminalControl::pump() {
    line_.pump();
    arm();
}

void TerminalControl::tick() {
    terminal_.tick();
    refresh();
}

void TerminalControl::arm() {
    if (line_wanted && terminal_.due())
        line_wanted();
    const auto next = terminal_.next_tick();
    if (next)
        timer_.start(std::chrono::ceil<milliseconds>(*next));
    else
        timer_.stop();
}

void TerminalControl::line_changed() {
    terminal_.line_changed();
    tell_line();
    watch_descriptor();
    refresh();
}

// A lost line has no descriptor; the timer looks for it. A notifier may be on the stack here.
void TerminalControl::watch_descriptor() {
    if (notifier_ != nullptr) {
        notifier_->setEnabled(false);
        notifier_->deleteLater();
        notifier_ = nullptr;
    }
    const int handle = line_.watch_handle();
    if (handle < 0)
        return;
    notifier_ = new QSocketNotifier(handle, QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &TerminalControl::pump);
}

// What Form2 shows, and whoever else follows the terminal.
void TerminalControl::follow_state() {
    QString state = port_name() + QStringLiteral("  ");
    if (!line_.is_open())
        state += QStringLiteral("closed");
    else if (!line_.is_connected())
        state += QStringLiteral("connection lost");
    else
        state += QStringLiteral("%1,%2,%3,%4")
                     .arg(settings_.baud)
                     .arg(QLatin1Char(parity_letter(settings_.parity_code)))
                     .arg(settings_.data_bits)
                     .arg(settings_.stop_bits);
    const auto on = [](bool level) { return level ? QStringLiteral("on") : QStringLiteral("off"); };
    if (const auto& lines = terminal_.line_state().lines)
        state += QStringLiteral("\nCTS %1   DSR %2   CD %3   RI %4")
                     .arg(on(lines->cts), on(lines->dsr), on(lines->carrier), on(lines->ring));
    form2_->set_state(state);
    if (on_change)
        on_change();
}

void TerminalControl::tell_error(std::string_view text) {
    if (std::exchange(telling_, true))
        return;  // one box says it
    later([this, text = std::string(text)] {
        person_.start_beep(milliseconds(0));
        Message message;
        message.text = text;
        message.buttons = Buttons::ok_cancel;
        message.title = "Click Cancel to quit, OK to ignore.";
        const Answer answer = person_.ask(message);
        telling_ = false;
        if (answer == Answer::cancel)
            line_.close();
    });
}

bool TerminalControl::ready_to_close() {
    if (gave_up_ || line_.output_left())
        return true;
    if (!close_timer_.isActive()) {
        show_status_(QStringLiteral("Waiting for the terminal's output to leave"));
        close_by_ = line_.clock().now() + k_finish_limit;
        close_timer_.start(k_close_step);
    }
    return false;
}

void TerminalControl::step_close() {
    line_.pump();
    const bool left = line_.output_left();
    if (!left && line_.clock().now() < close_by_)
        return;
    close_timer_.stop();
    if (!left) {
        gave_up_ = true;
        person_.notify("Data cannot be sent");
    }
    window_.close();
}

void TerminalControl::finish() {
    close_timer_.stop();
    Clock& clock = line_.clock();
    const Instant limit = clock.now() + k_finish_limit;
    while (!gave_up_ && !line_.output_left() && clock.now() < limit) {
        clock.sleep_until(clock.now() + k_drain_step);
        line_.pump();
    }
    gave_up_ = false;
    line_.close();
}

}  // namespace ampdesk
