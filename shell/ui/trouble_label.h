// The right end of the status line: which amplifiers are in shutdown or do not answer, as a window that
// is covered or an icon cannot tell.
#pragma once

#include <QLabel>
#include <QStringList>

#include "shell/ui/head_windows.h"

namespace ampdesk {

class TroubleLabel : public QLabel {
    Q_OBJECT

  public:
    explicit TroubleLabel(QWidget* parent);

    // "Shutdown: 1001, 1003   No answer: 1002", empty while all is well; of many the first six and how
    // many more, all of them in the tool tip. A shutdown that is new also makes the desktop mark the
    // program, where it can and another program is in front.
    void follow(const HeadWindows& heads);

  private:
    QStringList shutdowns_;  // numbers of those that were down
};

}  // namespace ampdesk
