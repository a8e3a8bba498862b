#include "tools/ui/output_label.h"

#include <QFontDatabase>
#include <string>

#include "platform/qt/text.h"

namespace ampdesk {

namespace {
constexpr int k_columns = 64;
}

OutputLabel::OutputLabel(const QString& name, int lines, QWidget* parent)
    : QScrollArea(parent), label_(new QLabel(this)) {
    label_->setObjectName(name);
    label_->setTextFormat(Qt::PlainText);
    label_->setWordWrap(true);
    label_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    label_->setMargin(4);
    const QFontMetrics metrics(label_->font());
    setMinimumSize(metrics.horizontalAdvance(u'0') * k_columns, metrics.lineSpacing() * lines + 12);
    setWidgetResizable(true);
    setWidget(label_);
}

void OutputLabel::set_text(std::string_view text) {
    std::string shown;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        const bool prints = code == '\n' || (code >= 32 && code < 127) || code >= 160;
        if (code != '\r')
            shown += prints ? c : ' ';
    }
    label_->setText(from_latin1(shown));
}

}  // namespace ampdesk
