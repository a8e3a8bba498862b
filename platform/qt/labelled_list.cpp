#include "platform/qt/labelled_list.h"

#include <QLineEdit>

namespace ampdesk {

LabelledList::LabelledList(const QString& name, const QString& label, QWidget* parent) : QComboBox(parent) {
    setObjectName(name);
    setAccessibleName(label);
    setEditable(true);
    lineEdit()->setAccessibleName(label);
    setInsertPolicy(NoInsert);
    // A completer would turn "com1:" into "COM1:".
    setCompleter(nullptr);
}

}  // namespace ampdesk
