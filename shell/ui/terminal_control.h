// The terminal's part of the main window: its port and settings, the watching of the port's descriptor,
// the timers of the terminal, its boxes, and what happens to its output when the window closes.
#pragma once

#include <QMainWindow>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <string>

#include "platform/qt/qt_operator.h"
#include "station/station.h"
#include "terminal/terminal.h"
#include "terminal/terminal_settings.h"
#include "terminal/ui/Form2.h"
#include "terminal/ui/term_box.h"

namespace ampdesk {

class TerminalControl : public QObject {
    Q_OBJECT

  public:
    // How long closing the main window waits for output to leave.
    static constexpr std::chrono::seconds k_finish_limit{3};

    // Takes the line's callbacks and those of the box until its end. A remote station's requests are the
    // station's guests.
    TerminalControl(QMainWindow& window, TermBox& box, TerminalLine& line, Station& station, BusLink& bus,
                    QtOperator& person, std::function<void(const QString&)> show_status);
    ~TerminalControl() override;

    // Reads "ampdesk.dat" when it is there. Throws what read_terminal_settings throws.
    void load_settings();
    const TerminalSettings& settings() const { return settings_; }

    // Opens the port that the settings name. A failure is told in the status label only; a port
    // that the amplifiers use is left to them.
    void open_at_start();

    // Keeps the settings. The port is opened anew only when its own have changed, as that ends a call.
    // Failures are told.
    void use_settings(const TerminalSettings& chosen);

    // "COM2:", or "No port".
    QString port_name() const;

    // To be called when something has been asked of the terminal, and when a transfer has given its
    // line back.
    void refresh();
    void take_line_back();

    // Called whenever the state of the terminal may have changed.
    std::function<void()> on_change;

    // A remote station's request waits.
    std::function<void()> line_wanted;

    // False while output has not left: the window is then closed from here, at most k_finish_limit
    // later and with a message when the output could not be sent.
    bool ready_to_close();

    // Ends the terminal: waits for what ready_to_close has not, then closes the port.
    void finish();

    Terminal& terminal() { return terminal_; }

  private:
    void pump();
    void tick();
    void arm();
    void line_changed();
    void watch_descriptor();
    void follow_state();
    PortResult open_line(const PortSettings& wanted);
    void tell_line();
    void tell_error(std::string_view text);
    void step_close();
    void later(std::function<void()> action);

    QMainWindow& window_;
    TermBox& Term_;
    TerminalLine& line_;
    Station& station_;
    BusLink& bus_;
    QtOperator& person_;
    std::function<void(const QString&)> show_status_;
    Terminal terminal_;
    TerminalSettings settings_;
    Form2* form2_;
    QSocketNotifier* notifier_ = nullptr;
    QTimer timer_;
    QTimer close_timer_;
    Instant close_by_{};
    QString line_name_;     // of the port that was opened last, or tried
    bool telling_ = false;  // the box of an error is open or about to
    bool gave_up_ = false;  // output that could not be sent no longer holds up the closing
};

}  // namespace ampdesk
