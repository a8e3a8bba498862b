// The label in which a service tool shows the bytes of a reply: fixed pitch, as long as it has to be,
// scrolled when there is no room, and to be copied from.
#pragma once

#include <QLabel>
#include <QScrollArea>
#include <string_view>

namespace ampdesk {

class OutputLabel : public QScrollArea {
    Q_OBJECT

  public:
    // `name` is the label's object name. `lines` of about 64 characters are seen at once.
    OutputLabel(const QString& name, int lines, QWidget* parent);

    // Latin-1. What does not print, but for line ends, is shown as a blank.
    void set_text(std::string_view text);

    QLabel& label() { return *label_; }

  private:
    QLabel* label_;
};

}  // namespace ampdesk
