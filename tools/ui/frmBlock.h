// The progress window of an nvRam transfer. It shows what it is told of it, and says which button was
// pressed.
#pragma once

#include <QDialog>
#include <QPointer>
#include <functional>

#include "tools/nvram_panel.h"

class QLabel;
class QMessageBox;
class QPushButton;

namespace ampdesk {

class OutputLabel;

class frmBlock : public QDialog {
    Q_OBJECT

  public:
    struct Hooks {
        std::function<void()> start;
        std::function<void()> pause;
        std::function<void()> exit;  // the window has closed, and the transfer is to end
    };

    // The window deletes itself when it has closed.
    frmBlock(const NvramPanel& panel, Hooks hooks, QWidget* parent);

    void show_panel(const NvramPanel& panel);

    void cmdOk_Click();
    void cmdCancel_Click();
    void CmdExit_Click();

    // Closes the window without a question.
    void Form_Unload();

    // Escape.
    void reject() override { ask_to_leave(); }

  protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void build();
    void ask_to_leave();
    void withdraw_question();
    void Form_Deactivate();

    NvramPanel panel_;
    const Hooks hooks_;
    bool unloaded_ = false;
    QPointer<QMessageBox> question_;

    QLabel* lblAddress_ = nullptr;
    QLabel* lblStatusLbl_ = nullptr;
    QLabel* lblStatus_ = nullptr;
    QLabel* lblOutputLbl_ = nullptr;
    OutputLabel* lblOutput_ = nullptr;
    QPushButton* cmdOk_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
};

}  // namespace ampdesk
