// "Setup Color For Control Head": colours and display font size are tried on a copy of the control
// head and taken over with OK.
#pragma once

#include <QDialog>
#include <memory>

#include "controlhead/control_head.h"
#include "controlhead/ui/panel_view.h"
#include "platform/dialogs.h"

namespace ampdesk {

class frmColor : public QDialog {
    Q_OBJECT

  public:
    frmColor(std::shared_ptr<ControlHead> head, GaugeRange gauge, Dialogs& person, QWidget* parent = nullptr);

  private:
    void cmdColor_Click(int index);
    void cmdFont_Click();
    void Command1_Click(int index);
    void change_look(const ScreenSettings& look);

    std::shared_ptr<ControlHead> head_;
    Dialogs& operator_;
    Panel copy_;
    PanelView* view_;
};

}  // namespace ampdesk
