// The progress window of an nvRam transfer. It owns the transfer and drives it from the event loop, so
// that heads are polled and buttons are heard between any two of its exchanges.
#pragma once

#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>

#include "tools/nvram_transfer.h"

class QLabel;
class QMessageBox;
class QPushButton;

namespace ampdesk {

class OutputLabel;

class frmBlock : public QDialog {
    Q_OBJECT

  public:
    // `must_wait` tells that the transfer has to leave the bus alone just now: somebody lets events
    // run between his own exchanges. The window deletes itself when it has closed.
    frmBlock(std::unique_ptr<NvramTransfer> transfer, BusLink& bus, std::function<bool()> must_wait,
             QWidget* parent);
    ~frmBlock() override;

    void cmdOk_Click();
    void cmdCancel_Click();
    void CmdExit_Click();

    // Closes the window without a question; the transfer ends and its file is closed.
    void Form_Unload();

    std::function<void()> on_unload;

    // Escape.
    void reject() override { ask_to_leave(); }

  protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void build();
    void ask_to_leave();
    void withdraw_question();
    void nvram_transfer_run();
    void arm();
    void refresh();
    void Form_Deactivate();

    std::unique_ptr<NvramTransfer> transfer_;
    BusLink& bus_;
    std::function<bool()> must_wait_;
    QTimer timer_;
    bool unloaded_ = false;
    QPointer<QMessageBox> question_;

    QLabel* lblStatusLbl_ = nullptr;
    QLabel* lblStatus_ = nullptr;
    QLabel* lblOutputLbl_ = nullptr;
    OutputLabel* lblOutput_ = nullptr;
    QPushButton* cmdOk_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
};

}  // namespace ampdesk
