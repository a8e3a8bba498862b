// One line of the display, `lblDisplayA(i)`: twenty characters, each centred in a cell of its own,
// so that the columns stand still whatever the font size.
#pragma once

#include <QLabel>

#include "controlhead/panel.h"

namespace ampdesk {

// The display's font, bold "Courier New".
QFont display_font(double points);

// Width and height in pixels of one character cell, with room for the largest font size.
QSize display_cell();

class DisplayLine : public QLabel {
    Q_OBJECT

  public:
    // Line 1..4.
    DisplayLine(int line, QWidget* parent);

    // Latin-1, 20 characters; a longer text is condensed to the same width.
    void show_text(const std::string& text);
    void show_look(const ScreenSettings& look);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    std::string shown_;
};

}  // namespace ampdesk
