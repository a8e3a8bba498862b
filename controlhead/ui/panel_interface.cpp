#include "controlhead/ui/panel_interface.h"

#include "controlhead/ui/panel_view.h"

namespace ampdesk {

QAccessibleInterface* PanelInterface::make(const QString& class_name, QObject* object) {
    const bool panel = class_name == QLatin1String(PanelView::staticMetaObject.className());
    auto* view = panel ? qobject_cast<PanelView*>(object) : nullptr;
    return view != nullptr ? new PanelInterface(view) : nullptr;
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
