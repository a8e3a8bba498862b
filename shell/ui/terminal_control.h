// The terminal's part of the main window: its text box, the small window that keeps its port in sight, and
// what is seen of the terminal, for whoever follows it.
#pragma once

#include <QMainWindow>
#include <functional>

#include "station/terminal_talk.h"
#include "terminal/ui/Form2.h"
#include "terminal/ui/term_box.h"

namespace ampdesk {

class TerminalControl : public QObject {
    Q_OBJECT

  public:
    // Takes the box's on_typed until its end.
    TerminalControl(QMainWindow& window, TermBox& box, std::function<void(const TerminalAct&)> send);
    ~TerminalControl() override;

    void take(const TerminalNotice& notice);

    // The last that was told; it stays where it is.
    const TerminalView& view() const { return view_; }

    // It has changed.
    std::function<void()> on_change;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void on(const notice::TerminalState& state);
    void on(const notice::TerminalText& text);
    void on(const notice::TransferState&) {}
    void on(const notice::FileNotKept&) {}
    void on(const notice::Traffic&) {}

    TermBox& Term_;
    std::function<void(const TerminalAct&)> send_;
    Form2* form2_;
    TerminalView view_;
};

}  // namespace ampdesk
