#include "shell/ui/trouble_label.h"

#include <QApplication>
#include <utility>

#include "platform/qt/text.h"

namespace ampdesk {

TroubleLabel::TroubleLabel(QWidget* parent) : QLabel(parent) {
    setObjectName(QStringLiteral("TroubleLabel"));
    setAccessibleDescription(QStringLiteral("Amplifiers in trouble"));
    setTextFormat(Qt::PlainText);
    QPalette red = palette();
    red.setColor(QPalette::WindowText, QColor(0xB0, 0x00, 0x10));
    setPalette(red);
    QFont bold = font();
    bold.setBold(true);
    setFont(bold);
}

void TroubleLabel::follow(const Station& station) {
    QStringList down;
    QStringList silent;
    for (const auto& head : station.open_heads()) {
        const QString number = from_utf8(head->identity().number);
        if (head->silent())
            silent << number;
        else if ((head->state().status_byte & k_status_shutdown) != 0)
            down << number;
    }
    QStringList parts;
    if (!down.isEmpty())
        parts << QStringLiteral("Shutdown: ") + down.join(QStringLiteral(", "));
    if (!silent.isEmpty())
        parts << QStringLiteral("No answer: ") + silent.join(QStringLiteral(", "));
    setText(parts.join(QStringLiteral("   ")));
    const auto count = static_cast<int>(down.size());
    if (std::exchange(shutdowns_, count) < count)
        QApplication::alert(window());
}

}  // namespace ampdesk
