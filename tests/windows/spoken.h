// What a screen reader says of a window, against what stands on the screen.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>

namespace ampdesk {

// The window is a dialog by the name of its caption. Whatever the keyboard can reach in it has a name
// that can be read there: its own caption, or its label's.
inline void expect_spoken(const QWidget& window, const QString& caption) {
    const auto heard = [](const QWidget& widget) {
        return QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
    };
    EXPECT_EQ(window.windowTitle(), caption);
    EXPECT_EQ(heard(window)->text(QAccessible::Name), caption);
    EXPECT_EQ(heard(window)->role(), QAccessible::Dialog);
    QStringList captions;
    for (const auto* label : window.findChildren<QLabel*>()) captions << label->text();
    for (const auto* button : window.findChildren<QAbstractButton*>()) captions << button->text();
    captions.removeAll(QString());  // they would excuse a name that is missing
    captions.replaceInStrings(QStringLiteral("&"), QString());
    for (const auto* widget : window.findChildren<QWidget*>()) {
        const QString part = widget->objectName();
        const bool reached = widget->isEnabled() && widget->focusPolicy() != Qt::NoFocus;
        const bool field = !part.isEmpty() && !part.startsWith(u"qt_") && !widget->inherits("QLabel");
        if (!reached || !field)
            continue;
        const QString name = heard(*widget)->text(QAccessible::Name);
        EXPECT_TRUE(captions.contains(name)) << part.toStdString() << ": " << name.toStdString();
        const auto* list = qobject_cast<const QComboBox*>(widget);
        EXPECT_TRUE(list == nullptr || heard(*widget)->text(QAccessible::Value) == list->currentText());
    }
}

}  // namespace ampdesk
