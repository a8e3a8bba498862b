// Show Debug: what goes over the amplifier bus and the terminal line, live. Records only while it is
// shown.
#pragma once

#include <QDockWidget>
#include <QTimer>
#include <deque>
#include <functional>

#include "platform/dialogs.h"
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

    // The references stay valid as long as the dock. The clock is the one that the traffic was timed by.
    DebugDock(const Clock& clock, Dialogs& person, QWidget* parent);
    ~DebugDock() override;

    // Whether it wants to be told of the traffic.
    std::function<void(bool on)> on_watch;

    void add(const std::deque<TrafficChunk>& traffic);

    void cmdSave_Click();

  private:
    QWidget* build();
    void watch(bool on);
    void update_soon();
    void show_new();
    TrafficFilter chosen_filter() const;

    const Clock& clock_;
    Dialogs& operator_;
    TrafficLog log_;
    TrafficFilter filter_;    // of what the view shows
    std::uint64_t next_ = 0;  // the first entry that the view does not show yet
    bool watching_ = false;
    QTimer timer_;

    QPlainTextEdit* view_;
    QLineEdit* text_;
    QSpinBox* unit_;
    QComboBox* which_;
    QComboBox* direction_;
    QPushButton* pause_;
};

}  // namespace ampdesk
