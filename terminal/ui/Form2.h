// `Form2`, the small window that keeps the terminal's port in sight: its settings and modem lines, on
// top of all windows until its button is pressed.
#pragma once

#include <QWidget>

class QLabel;

namespace ampdesk {

class Form2 : public QWidget {
    Q_OBJECT

  public:
    explicit Form2(QWidget* parent);

    // Shows the window, or brings it to the front; its closing flag is false then.
    void show_on_top();

    void set_state(const QString& text);

  protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void Form_Activate();
    void Form_Deactivate();
    void Command1_Click();

    bool closing_ = true;
    QLabel* state_;
};

}  // namespace ampdesk
