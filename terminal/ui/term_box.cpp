#include "terminal/ui/term_box.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QTextBlock>
#include <algorithm>
#include <memory>
#include <optional>

#include "platform/qt/text.h"
#include "terminal/received_text.h"

namespace ampdesk {

namespace {

// The character that a key stands for, as it goes over the line; nothing for keys that only move the
// caret or belong to the window.
std::optional<char> key_character(const QKeyEvent& event) {
    const Qt::KeyboardModifiers with = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    switch (event.key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return '\r';
        case Qt::Key_Backspace:
            return '\b';
        case Qt::Key_Tab:
            return '\t';
        case Qt::Key_Escape:
            return '\x1B';
        default:
            break;
    }
    if (with == Qt::ControlModifier && event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z)
        return static_cast<char>(event.key() - Qt::Key_A + 1);
    const QString text = event.text();
    // AltGr reads as both modifiers; either alone makes a command of the window.
    const bool plain = with == Qt::NoModifier || with.testFlag(Qt::GroupSwitchModifier) ||
                       with == (Qt::ControlModifier | Qt::AltModifier);
    if (!plain || text.size() != 1 || !text[0].isPrint() || text[0].unicode() > 0xFF)
        return std::nullopt;
    return text[0].toLatin1();
}

QString shown_text(std::string_view bytes) {
    QString text = from_latin1(bytes);
    for (QChar& c : text) {
        if (c == u'\r')
            c = u'\n';
        else if (c != u'\t' && !c.isPrint() && c != QChar::Nbsp)
            c = u' ';
    }
    return text;
}

}  // namespace

TermBox::TermBox(QWidget* parent) : QPlainTextEdit(parent) {
    setObjectName(QStringLiteral("Term"));
    setAccessibleName(QStringLiteral("Terminal"));
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setUndoRedoEnabled(false);  // it would keep everything that ever came in
    QPalette screen_colours = palette();
    screen_colours.setColor(QPalette::Base, QColor(0x1E, 0x20, 0x22));
    screen_colours.setColor(QPalette::Text, QColor(0xE2, 0xE4, 0xE0));
    setPalette(screen_colours);
}

std::size_t TermBox::length() const {
    return static_cast<std::size_t>(document()->characterCount() - 1);
}

void TermBox::drop_oldest(std::size_t count) {
    if (count == 0)
        return;
    QTextCursor oldest(document());
    oldest.setPosition(static_cast<int>(std::min(count, length())), QTextCursor::KeepAnchor);
    oldest.removeSelectedText();
}

void TermBox::ShowData(std::string_view bytes) {
    const ShownText shown = ampdesk::ShowData(length(), bytes);
    drop_oldest(shown.drop);
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.insertText(shown_text(shown.insert));
    setTextCursor(end);
}

void TermBox::keyPressEvent(QKeyEvent* event) {
    const bool copies = event->matches(QKeySequence::Copy) && textCursor().hasSelection();
    const auto key = key_character(*event);
    if (copies || event->matches(QKeySequence::Paste) || !key) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    event->accept();
    if (!typed({&*key, 1}))
        return;
    drop_oldest(ampdesk::ShowData(length(), {}).drop);
    const bool control =
        static_cast<unsigned char>(*key) < ' ' && *key != '\r' && *key != '\b' && *key != '\t';
    if (!control)
        QPlainTextEdit::keyPressEvent(event);
}

// Composed characters and pasted text, the line ends as the Enter key gives them.
void TermBox::type_text(const QString& text) {
    QString lines = text;
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\r")).replace(u'\n', u'\r');
    lines.removeIf([](QChar c) { return c.unicode() > 0xFF; });
    const std::string bytes = lines.toLatin1().toStdString();
    if (bytes.empty() || !typed(bytes))
        return;
    constexpr std::size_t k_most = k_terminal_limit;  // more would go again at once
    drop_oldest(ampdesk::ShowData(length(), {}).drop);
    textCursor().insertText(
        shown_text(std::string_view(bytes).substr(bytes.size() - std::min(bytes.size(), k_most))));
    ensureCursorVisible();
}

void TermBox::inputMethodEvent(QInputMethodEvent* event) {
    type_text(event->commitString());
    event->setCommitString({});
    QPlainTextEdit::inputMethodEvent(event);
}

void TermBox::insertFromMimeData(const QMimeData* source) {
    type_text(source->text());
}

void TermBox::contextMenuEvent(QContextMenuEvent* event) {
    const std::unique_ptr<QMenu> menu(createStandardContextMenu());
    menu->addSeparator();
    for (QAction* action : menu_actions_) menu->addAction(action);
    menu->exec(event->globalPos());
}

}  // namespace ampdesk
