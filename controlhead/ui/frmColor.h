// "Setup Color For Control Head": colours and display font size are tried on a copy of the front
// panel and taken over with OK.
#pragma once

#include <QDialog>
#include <functional>

#include "controlhead/panel.h"
#include "controlhead/ui/panel_view.h"
#include "platform/dialogs.h"

namespace ampdesk {

class frmColor : public QDialog {
    Q_OBJECT

  public:
    // `panel` as it is to be seen when the dialog opens.
    frmColor(const Panel& panel, GaugeRange gauge, Dialogs& person, QWidget* parent = nullptr);

    std::function<void(const ScreenSettings&)> on_ok;

  private:
    void cmdColor_Click(int index);
    void cmdFont_Click();
    void Command1_Click(int index);
    void change_look(const ScreenSettings& look);

    Dialogs& operator_;
    Panel copy_;
    PanelView* view_;
};

}  // namespace ampdesk
