// Asks for the volume of the modem's loudspeaker.
#pragma once

#include <QDialog>

#include "terminal/modem.h"

class QButtonGroup;

namespace ampdesk {

class VolumeDialog : public QDialog {
    Q_OBJECT

  public:
    explicit VolumeDialog(QWidget* parent);

    Volume volume() const;

  private:
    QButtonGroup* choices_;
};

}  // namespace ampdesk
