// The keyboard of the main window for the active control head: F1 to F4 soft keys, Escape EXIT,
// Ctrl+1 to Ctrl+4 hard keys, arrows and page keys its scroll bar.
#pragma once

#include <QObject>
#include <QShortcut>
#include <functional>
#include <vector>

#include "controlhead/ui/frmMachine.h"

namespace ampdesk {

class HeadKeys : public QObject {
    Q_OBJECT

  public:
    // `active_head` gives the head that keys go to, or nothing: they then keep their usual meaning.
    HeadKeys(QWidget* window, std::function<frmMachine*()> active_head);

    // Whether there is an active head, or whether its scroll bar is shown, may have changed.
    void follow();

  private:
    void add(const QKeySequence& key, std::function<void(frmMachine&)> action);
    void add_scroll(Qt::Key key, QAbstractSlider::SliderAction action);

    QWidget* window_;
    std::function<frmMachine*()> active_head_;
    std::vector<QShortcut*> keys_;
    std::vector<QShortcut*> scroll_keys_;
};

}  // namespace ampdesk
