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
    struct Hooks {
        std::function<std::int16_t()> unit_address;  // of the current amplifier; asked anew for every command
        std::function<void(std::int16_t unit_address, const std::string& text)> send;
    };

    // `history` outlives the window.
    frmIntact(CommandHistory& history, Hooks hooks, QWidget* parent);

    // A command is sound and will be sent.
    void show_sending();
    void show_result(const Console::Result& result);

    void cmdOk_Click();
    void CmdExit_Click() { close(); }

  protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void build();
    void Form_Load();
    void show_state();

    CommandHistory& history_;
    const Hooks hooks_;
    bool no_response_ = false;
    int address_ = -1;  // whom the window shows
    QLineEdit* TxtInput_ = nullptr;
    QLabel* lblReply_ = nullptr;
    OutputLabel* LblOutput_ = nullptr;
};

}  // namespace ampdesk
