#include "controlhead/ui/panel_interface.h"

#include <QAbstractButton>

#include "controlhead/ui/panel_view.h"

namespace ampdesk {

namespace {

// A key or lamp. Qt's own press is a show of a tenth of a second that the next press begins anew, so that of
// presses in quick order only the last one counts. Here each of them is a click.
class KeyInterface : public QAccessibleWidget {
  public:
    explicit KeyInterface(QAbstractButton* key) : QAccessibleWidget(key, QAccessible::Button), key_(key) {}

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    // Not at once: a click may open a box, and whoever asks waits for the answer of this call.
    void doAction(const QString& action) override {
        if (action == pressAction())
            QMetaObject::invokeMethod(key_, &QAbstractButton::click, Qt::QueuedConnection);
        else
            QAccessibleWidget::doAction(action);
    }

  private:
    QAbstractButton* key_;
};

}  // namespace

QAccessibleInterface* PanelInterface::make(const QString& class_name, QObject* object) {
    if (class_name == QLatin1String(PanelView::staticMetaObject.className()))
        return new PanelInterface(qobject_cast<QWidget*>(object));
    if (class_name == QLatin1String(PanelKey::staticMetaObject.className()) ||
        class_name == QLatin1String(LampButton::staticMetaObject.className()))
        return new KeyInterface(qobject_cast<QAbstractButton*>(object));
    return nullptr;
}

QList<QAccessibleInterface*> PanelInterface::shown() const {
    QList<QAccessibleInterface*> list;
    for (int i = 0; i < QAccessibleWidget::childCount(); ++i) {
        QAccessibleInterface* one = QAccessibleWidget::child(i);
        const auto* part = one != nullptr ? qobject_cast<QWidget*>(one->object()) : nullptr;
        if (part != nullptr && !part->isHidden())
            list << one;
    }
    return list;
}

int PanelInterface::indexOfChild(const QAccessibleInterface* wanted) const {
    const auto list = shown();
    for (int i = 0; i < list.size(); ++i)
        if (wanted != nullptr && list[i]->object() == wanted->object())
            return i;
    return -1;
}

}  // namespace ampdesk
