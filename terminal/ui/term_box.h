// The text box `Term`: typed keys go out as characters before they are shown, received text is added
// at its end, and what it holds is bounded.
#pragma once

#include <QPlainTextEdit>
#include <functional>
#include <string_view>
#include <vector>

namespace ampdesk {

class TermBox : public QPlainTextEdit {
    Q_OBJECT

  public:
    explicit TermBox(QWidget* parent = nullptr);

    // Takes the characters that were typed or pasted, a carriage return for a line's end; true when
    // the box is to show them. Unset, they are only shown.
    std::function<bool(std::string_view)> on_typed;

    // Adds Latin-1 bytes at the end and puts the caret there. Carriage returns break lines; other
    // characters that do not print show as blanks.
    void ShowData(std::string_view bytes);

    // Shown below the ordinary items of the context menu.
    void add_menu_action(QAction* action) { menu_actions_.push_back(action); }

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    bool typed(std::string_view text) { return !on_typed || on_typed(text); }
    void type_text(const QString& text);
    std::size_t length() const;
    void drop_oldest(std::size_t count);

    std::vector<QAction*> menu_actions_;
};

}  // namespace ampdesk
