// Brings the windows back to where they stood when the program ended, and keeps where they stand.
#pragma once

#include <QMainWindow>
#include <QMdiSubWindow>
#include <QObject>
#include <map>
#include <string>

#include "shell/window_layout.h"

namespace ampdesk {

class LayoutKeeper : public QObject {
    Q_OBJECT

  public:
    // Reads the file; without one everything stays where a first start puts it.
    LayoutKeeper(QMainWindow& main, const std::string& path);

    // The main window, brought onto the screens there are. To be called before it is shown.
    void restore_main();

    // A head's window that has just been shown: puts it where it stood, inside the area there is now,
    // and follows it from here on.
    void follow(QMdiSubWindow& window, const std::string& number);

    // What the file is to hold: the open heads and those that were closed before.
    WindowLayout layout() const;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void restore(QMdiSubWindow& window, const HeadPlace& kept);

    QMainWindow& main_;
    bool known_ = false;  // there was a file
    WindowLayout read_;
    std::map<std::string, HeadPlace> heads_;    // by amplifier number
    std::map<QObject*, std::string> followed_;  // the open windows
};

}  // namespace ampdesk
