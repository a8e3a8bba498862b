// A list that can also be typed into, as the dialogs use it: the text is taken exactly as typed.
#pragma once

#include <QComboBox>

namespace ampdesk {

class LabelledList : public QComboBox {
    Q_OBJECT

  public:
    LabelledList(const QString& name, const QString& label, QWidget* parent);
};

}  // namespace ampdesk
