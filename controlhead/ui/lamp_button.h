// A lamp of the front panel, `picLight(i)`: a round lens that can also be clicked.
#pragma once

#include <QPushButton>

#include "controlhead/panel.h"

namespace ampdesk {

class LampButton : public QPushButton {
    Q_OBJECT

  public:
    // Lamp 1..8.
    LampButton(int lamp, QWidget* parent);

    void show_colour(LampColour colour);

    static constexpr int k_size = 26;  // pixels, glow included

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    LampColour colour_ = LampColour::dark;
};

}  // namespace ampdesk
