// Show Debug: what goes over the amplifier bus and the terminal line, live. Records only while it is
// shown.
#pragma once

#include <QDockWidget>
#include <QTimer>

#include "buslink/bus_link.h"
#include "platform/dialogs.h"
#include "terminal/terminal_line.h"
#include "terminal/traffic.h"

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;

namespace ampdesk {

class DebugDock : public QDockWidget {
    Q_OBJECT

  public:
    static constexpr std::chrono::milliseconds k_update{100};  // new entries are shown together
    static constexpr int k_most_lines = 10'000;                // in the view

    // The references stay valid as long as the dock. Takes the bus's on_traffic while it is shown.
    DebugDock(BusLink& bus, TerminalLine& line, Dialogs& person, QWidget* parent);
    ~DebugDock() override;

    void cmdSave_Click();

  private:
    QWidget* build();
    void listen(bool on);
    void note(TrafficLine line, bool sent, int unit, std::string_view bytes);
    void update_soon();
    void show_new();
    TrafficFilter chosen_filter() const;

    BusLink& bus_;
    TerminalLine& line_;
    Dialogs& operator_;
    TrafficLog log_;
    TrafficFilter filter_;    // of what the view shows
    std::uint64_t next_ = 0;  // the first entry that the view does not show yet
    int watcher_ = 0;
    bool listening_ = false;
    QTimer timer_;

    QPlainTextEdit* view_;
    QLineEdit* text_;
    QSpinBox* unit_;
    QComboBox* which_;
    QComboBox* direction_;
    QPushButton* pause_;
};

}  // namespace ampdesk
