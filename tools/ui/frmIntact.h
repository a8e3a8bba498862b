// The interactive command console: one raw command to the current amplifier, the frame that went out
// and the bytes that came back.
#pragma once

#include <QDialog>
#include <functional>

#include "tools/command_history.h"
#include "tools/console.h"

class QLabel;
class QLineEdit;

namespace ampdesk {

class OutputLabel;

class frmIntact : public QDialog {
    Q_OBJECT

  public:
    // `console` and `history` outlive the window, which takes the console's callbacks.
    // `unit_address` gives the current amplifier, asked anew for every command.
    frmIntact(Console& console, CommandHistory& history, std::function<std::int16_t()> unit_address,
              QWidget* parent);
    ~frmIntact() override;

    void cmdOk_Click();
    void CmdExit_Click() { close(); }

    // A command waits to be sent.
    std::function<void()> on_send;

  protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void build();
    void Form_Load();
    void show_state();
    void show_result(const Console::Result& result);

    Console& console_;
    CommandHistory& history_;
    std::function<std::int16_t()> unit_address_;
    bool no_response_ = false;
    int address_ = -1;  // whom the window shows
    QLineEdit* TxtInput_ = nullptr;
    QLabel* lblReply_ = nullptr;
    OutputLabel* LblOutput_ = nullptr;
};

}  // namespace ampdesk
