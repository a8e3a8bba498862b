// The progress window of an nvRam transfer, which it owns.
#pragma once

#include <QDialog>
#include <QPointer>
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
    // The window deletes itself when it has closed.
    frmBlock(std::unique_ptr<NvramTransfer> transfer, QWidget* parent);
    ~frmBlock() override;

    void cmdOk_Click();
    void cmdCancel_Click();
    void CmdExit_Click();

    // Closes the window without a question; the transfer ends and its file is closed.
    void Form_Unload();

    // The transfer wants the line from now on.
    std::function<void()> on_start;

    // It does not exist much longer.
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
    void refresh();
    void Form_Deactivate();

    std::unique_ptr<NvramTransfer> transfer_;
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
