#include "shell/ui/trouble_label.h"

#include <QApplication>
#include <algorithm>
#include <utility>

#include "platform/qt/text.h"

namespace ampdesk {

namespace {

// A dead line may take dozens with it; the line has to hold both kinds and the other messages.
QString shortened(const QStringList& numbers) {
    constexpr int k_most_named = 6;
    const auto more = static_cast<int>(numbers.size()) - k_most_named;
    if (more <= 1)
        return numbers.join(QStringLiteral(", "));
    return numbers.first(k_most_named).join(QStringLiteral(", ")) + QStringLiteral(" and %1 more").arg(more);
}

}  // namespace

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

void TroubleLabel::follow(const HeadWindows& heads) {
    QStringList down;
    QStringList silent;
    for (const frmMachine* head : heads.all()) {
        const QString number = from_utf8(head->identity().number);
        if (head->view().silent)
            silent << number;
        else if (head->view().in_shutdown)
            down << number;
    }
    QStringList parts;
    QStringList all;
    const auto tell = [&](const QString& what, const QStringList& numbers) {
        if (numbers.isEmpty())
            return;
        parts << what + shortened(numbers);
        all << what + numbers.join(QStringLiteral(", "));
    };
    tell(QStringLiteral("Shutdown: "), down);
    tell(QStringLiteral("No answer: "), silent);
    setText(parts.join(QStringLiteral("   ")));
    setToolTip(all.join(QLatin1Char('\n')));
    const QStringList before = std::exchange(shutdowns_, down);
    if (!std::all_of(down.begin(), down.end(),
                     [&](const QString& number) { return before.contains(number); }))
        QApplication::alert(window());
}

}  // namespace ampdesk
