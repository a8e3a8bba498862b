// The windows of the amplifiers inside the main window: they come and go with the station's control heads,
// and what is done in them is sent there.
#pragma once

#include <QMdiArea>
#include <QMdiSubWindow>
#include <functional>
#include <memory>
#include <vector>

#include "controlhead/ui/frmMachine.h"
#include "shell/ui/arrange.h"
#include "shell/ui/layout_keeper.h"
#include "shell/ui/stand_still.h"
#include "station/head_talk.h"

namespace ampdesk {

class HeadWindows : public QObject {
    Q_OBJECT

  public:
    // The references stay valid as long as this.
    HeadWindows(QMdiArea& area, LayoutKeeper& layout, GaugeRange gauge, const Clock& clock,
                std::function<void(const HeadAct&)> send);
    ~HeadWindows() override;

    void show(const HeadNotice& notice);

    // In the order in which they were opened.
    const std::vector<frmMachine*>& all() const { return machines_; }

    // That of the current sub-window, which keys and menu items mean; null when there is none.
    frmMachine* active() const;

    void arrange(Arrangement how) const;

  Q_SIGNALS:
    // One has come or gone, another is in front, or is an icon now, or shows a scroll bar.
    void changed();

  private:
    void on(const notice::HeadOpened& opened);
    void on(const notice::HeadChanged& changed);
    void on(const notice::HeadClosed& closed);
    void on(const notice::LineState&) {}
    frmMachine* find(int head) const;
    frmMachine::Hooks hooks_of(frmMachine* machine);
    void forget(const frmMachine* machine);

    QMdiArea& area_;
    LayoutKeeper& layout_;
    GaugeRange gauge_;
    const Clock& clock_;
    const StandStill stand_still_;
    std::function<void(const HeadAct&)> send_;
    const std::unique_ptr<QStyle> icon_style_;
    std::vector<frmMachine*> machines_;
    int active_ = 0;  // the station knows of
};

}  // namespace ampdesk
