// The window of one amplifier: its front panel in the middle of a sub-window, keys and scroll bar to
// the control head, the head's panel back to the screen.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "controlhead/control_head.h"
#include "controlhead/ui/panel_view.h"

namespace ampdesk {

class frmMachine : public QWidget {
    Q_OBJECT

  public:
    frmMachine(std::shared_ptr<ControlHead> head, GaugeRange gauge);
    ~frmMachine() override;

    // The head, as long as it has not been let go of.
    const std::shared_ptr<ControlHead>& head() const { return head_; }

    // The head has closed: the window shows nothing more of it and sends it nothing more.
    void let_go();

    // The window is on its way out by the operator's hand.
    bool closing() const { return closing_; }

    // Handlers; they do nothing once the head is let go.
    void cmdKey_Click(int index);
    void cmdHardkey_Click(int index);
    void picLight_Click(int index);
    void VScroll1_Change(int value);

    PanelView& panel_view() { return *view_; }
    QSize sizeHint() const override;

    // The operator has done something to the head.
    std::function<void()> on_act;

    // The operator closes the window.
    std::function<void(ControlHead&)> on_close;

  protected:
    void resizeEvent(QResizeEvent*) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void refresh_soon();
    void refresh();
    void follow_shutdown();
    bool ok_is_seen(int key);
    std::string did(int key) const;
    void acted();
    void Form_Resize();

    std::shared_ptr<ControlHead> head_;
    PanelView* view_;
    Panel painted_;
    bool refresh_pending_ = false;
    bool shutdown_painted_ = false;
    bool ok_seen_ = false;  // the OK of a shutdown has been there for the operator to see
    bool closing_ = false;
};

}  // namespace ampdesk
