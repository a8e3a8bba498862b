// The front panel as a screen reader meets it: what is hidden, the scroll bar above all, is not there, and
// each press of a key is a click.
#pragma once

#include <QAccessibleWidget>

namespace ampdesk {

class PanelInterface : public QAccessibleWidget {
  public:
    explicit PanelInterface(QWidget* panel) : QAccessibleWidget(panel) {}

    int childCount() const override { return static_cast<int>(shown().size()); }
    QAccessibleInterface* child(int index) const override { return shown().value(index); }
    int indexOfChild(const QAccessibleInterface* wanted) const override;

    // For QAccessible::installFactory: serves PanelView, its keys and lamps.
    static QAccessibleInterface* make(const QString& class_name, QObject* object);

  private:
    QList<QAccessibleInterface*> shown() const;
};

}  // namespace ampdesk
