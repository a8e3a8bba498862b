#include "platform/qt/list_names.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLineEdit>

namespace ampdesk {

namespace {

// But for the name it is as Qt's own: the rows are the first child, the field to type into the second.
class NamedList : public QAccessibleWidget {
  public:
    explicit NamedList(QComboBox* list) : QAccessibleWidget(list, QAccessible::ComboBox), list_(list) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value)
            return list_->currentText();
        const QString own = QAccessibleWidget::text(kind);
        return kind == QAccessible::Description && own.isEmpty() ? list_->currentText() : own;
    }
    void setText(QAccessible::Text kind, const QString& text) override {
        if (kind == QAccessible::Value && list_->isEditable())
            list_->setEditText(text);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = list_->isEditable();
        state.hasPopup = true;
        state.expandable = true;
        state.expanded = list_->view()->isVisible();
        return state;
    }

    int childCount() const override { return list_->isEditable() ? 2 : 1; }
    QAccessibleInterface* child(int index) const override {
        if (index == 0) {
            list_->view()->setAccessibleName(text(QAccessible::Name));
            return QAccessible::queryAccessibleInterface(list_->view());
        }
        return index == 1 ? QAccessible::queryAccessibleInterface(list_->lineEdit()) : nullptr;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        const QLineEdit* field = list_->lineEdit();
        return field != nullptr && field->rect().contains(field->mapFromGlobal(QPoint(x, y))) ? child(1)
                                                                                              : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        if (child->object() == list_->view())
            return 0;
        return child->object() != nullptr && child->object() == list_->lineEdit() ? 1 : -1;
    }

    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
    void doAction(const QString& action) override {
        if (action != showMenuAction() && action != pressAction())
            return;
        if (list_->view()->isVisible())
            list_->hidePopup();
        else
            list_->showPopup();
    }

  private:
    QComboBox* list_;
};

QAccessibleInterface* make_interface(const QString& class_name, QObject* object) {
    const bool meant = class_name == QLatin1String(QComboBox::staticMetaObject.className());
    auto* list = meant ? qobject_cast<QComboBox*>(object) : nullptr;
    return list != nullptr ? new NamedList(list) : nullptr;
}

}  // namespace

void name_lists_by_their_labels() {
    QAccessible::installFactory(make_interface);
}

}  // namespace ampdesk
