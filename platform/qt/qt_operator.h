// The operator as Qt shows him to the program: message boxes, file dialogs, sound and
// pointer. Boxes run their own event loop, so timers go on while one is open.
#pragma once

#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <deque>

#include "platform/clock.h"
#include "platform/dialogs.h"

namespace ampdesk {

class QtOperator : public Dialogs {
  public:
    QtOperator();
    ~QtOperator() override;

    // Boxes stand in front of this window; without one they stand alone.
    void set_parent_window(QWidget* window) { parent_ = window; }

    // The program is ending: nothing is shown any more, and every question is answered as if its box
    // had been closed.
    void retire();

    // One box or dialog at a time, without a loop of its own; it stands in front of whatever dialog is open.
    void tell(const Message& message) override;
    void put_question(int number, const Question& question) override;
    void withdraw(int number) override;

    // Nothing of it stands or waits to be shown; on_quiet is called from the event loop when that becomes so.
    bool quiet() const { return !standing_ && waiting_.empty(); }
    bool is_own(const QWidget* widget) const { return standing_ == widget; }
    std::function<void()> on_quiet;

    // Called from the event loop with the answer to a question.
    std::function<void(int number, const Reply& reply)> on_reply;

    // The dialog for a band, and what it has come to once it is accepted.
    struct BandDialog {
        QDialog* dialog = nullptr;
        std::function<std::string()> band;
    };
    std::function<BandDialog(QWidget* parent)> make_band_dialog;

    Answer ask(const Message& message) override;
    std::optional<std::string> choose_file_to_open(std::string_view title, std::string_view filter) override;
    std::optional<std::string> choose_file_to_save(std::string_view title, std::string_view filter,
                                                   std::string_view suggestion,
                                                   bool ask_to_replace = true) override;
    void start_beep(std::chrono::milliseconds length) override;
    void set_busy_pointer(bool busy) override;
    void show_status(std::string_view text) override;
    // One short sound; a beep is made of them.
    std::function<void()> sound;

    // Where a status is shown; without it there is no status label.
    std::function<void(const QString&)> on_status;

  private:
    enum class FileChoice { open, save, save_without_question };
    std::optional<std::string> choose_file(FileChoice choice, std::string_view title, std::string_view filter,
                                           std::string_view suggestion);

    struct Waiting {
        int number = 0;  // of a question; 0 for what is told
        Question question;
    };
    QWidget* in_front() const;
    void show_soon();
    void show_next();
    void show_choice(const Waiting& waiting);
    void show_text(const Waiting& waiting);
    void show_band(const Waiting& waiting);
    void stand(QDialog* dialog, const Waiting& waiting, std::function<Reply(int result)> reply);

    QPointer<QWidget> parent_;
    std::deque<Waiting> waiting_;
    QPointer<QDialog> standing_;
    Waiting shown_;  // by it
    QTimer show_timer_;
    QTimer beep_timer_;
    Instant beep_end_{};
    bool retired_ = false;
    int busy_ = 0;
};

// "Text (*.EXT)|*.ext|All Files (*.*)|*.*" as a file dialog takes it that hides the last parentheses:
// one entry a filter, its text as it is and the patterns in parentheses of their own. "*.*" becomes "*",
// which also matches names without a point.
QStringList name_filters(std::string_view filter);

}  // namespace ampdesk
