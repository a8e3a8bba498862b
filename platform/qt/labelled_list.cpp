#include "platform/qt/labelled_list.h"

#include <QAccessibleWidget>
#include <QLineEdit>

namespace ampdesk {

namespace {

// Qt itself gives the current text of a combo box as its name on this platform.
class LabelledListInterface : public QAccessibleWidget {
  public:
    explicit LabelledListInterface(LabelledList* list)
        : QAccessibleWidget(list, QAccessible::ComboBox), list_(list) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? list_->currentText() : QAccessibleWidget::text(kind);
    }
    void setText(QAccessible::Text kind, const QString& text) override {
        if (kind == QAccessible::Value)
            list_->setEditText(text);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = true;
        state.hasPopup = true;
        state.expandable = true;
        return state;
    }
    QStringList actionNames() const override { return {showMenuAction()}; }
    void doAction(const QString& action) override {
        if (action == showMenuAction())
            list_->showPopup();
    }

  private:
    LabelledList* list_;
};

QAccessibleInterface* make_interface(const QString& class_name, QObject* object) {
    auto* list = class_name == QLatin1String(LabelledList::staticMetaObject.className())
                     ? qobject_cast<LabelledList*>(object)
                     : nullptr;
    return list != nullptr ? new LabelledListInterface(list) : nullptr;
}

}  // namespace

LabelledList::LabelledList(const QString& name, const QString& label, QWidget* parent) : QComboBox(parent) {
    QAccessible::installFactory(make_interface);  // a second time does nothing
    setObjectName(name);
    setAccessibleName(label);
    setEditable(true);
    lineEdit()->setAccessibleName(label);
    setInsertPolicy(NoInsert);
    // A completer would turn "com1:" into "COM1:".
    setCompleter(nullptr);
}

}  // namespace ampdesk
