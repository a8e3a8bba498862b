// A key of the front panel: `cmdKey(i)` or `cmdHardkey(i)`. The legend is not on its face; a screen
// reader gets it as the key's name.
#pragma once

#include <QPushButton>

namespace ampdesk {

class PanelKey : public QPushButton {
    Q_OBJECT

  public:
    enum class Kind { soft, exit, hard };

    PanelKey(Kind kind, QSize size, QWidget* parent);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    Kind kind_;
};

}  // namespace ampdesk
