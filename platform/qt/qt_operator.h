// The operator as Qt shows him to the program: message boxes, input box, file dialogs, sound and
// pointer. Boxes run their own event loop, so timers go on while one is open.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include "platform/clock.h"
#include "platform/operator.h"

namespace ampdesk {

class QtOperator : public Operator {
  public:
    QtOperator();
    ~QtOperator() override;

    // Boxes stand in front of this window; without one they stand alone.
    void set_parent_window(QWidget* window) { parent_ = window; }

    // The program is ending: nothing is shown any more, and every question is answered as if its box
    // had been closed.
    void retire() { retired_ = true; }

    Answer ask(const Message& message) override;
    std::optional<std::string> input_box(std::string_view prompt) override;
    std::optional<std::string> choose_file_to_open(std::string_view title, std::string_view filter) override;
    std::optional<std::string> choose_file_to_save(std::string_view title, std::string_view filter,
                                                   std::string_view suggestion,
                                                   bool ask_to_replace = true) override;
    void start_beep(std::chrono::milliseconds length) override;
    void set_busy_pointer(bool busy) override;
    void show_status(std::string_view text) override;
    void let_events_run() override;

    // let_events_run is on the stack, with no box or dialog opened from inside it.
    bool letting_events_run() const;

    // One short sound; a beep is made of them.
    std::function<void()> sound;

    // Where a status is shown; without it there is no status label.
    std::function<void(const QString&)> on_status;

  private:
    enum class FileChoice { open, save, save_without_question };
    std::optional<std::string> choose_file(FileChoice choice, std::string_view title, std::string_view filter,
                                           std::string_view suggestion);

    QPointer<QWidget> parent_;
    QTimer beep_timer_;
    Instant beep_end_{};
    bool retired_ = false;
    int busy_ = 0;
    bool letting_events_run_ = false;
    QPointer<QWidget> box_before_;  // the box that was open when let_events_run began
};

// "Text (*.EXT)|*.ext|All Files (*.*)|*.*" as a file dialog takes it that hides the last parentheses:
// one entry a filter, its text as it is and the patterns in parentheses of their own. "*.*" becomes "*",
// which also matches names without a point.
QStringList name_filters(std::string_view filter);

}  // namespace ampdesk
