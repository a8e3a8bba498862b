// A whole station as in desk.h, with a modem at the terminal's line, and files that are chosen by their
// names.
#pragma once

#include <QFileDialog>
#include <QLineEdit>

#include "tests/support/modem_port.h"
#include "tests/windows/desk.h"

namespace ampdesk {

// There before the window.
struct FarModem {
    ManualClock line_clock;
    ModemPort modem{line_clock};
};

class ModemDesk : protected FarModem, public Desk {
  protected:
    ModemDesk() : Desk(&modem) {}

    void start(const std::string& lines = "2\r\n") {
        folder.put("ampdesk.dat", "ampdesk settings\r\n" + lines);
        form.load();
        settle();
    }
    void receive(std::string bytes) {
        modem.arrive(std::move(bytes));
        settle();
    }
    // Of this folder, once the file dialog is open.
    void when_file_is_asked(const std::string& name) {
        when_dialog_opens("QFileDialog", [this, name](QDialog& dialog) {
            auto* field = child<QLineEdit>(dialog, "fileNameEdit");
            field->setText(QString::fromStdString(folder / name));
            QTest::keyClick(field, Qt::Key_Return);
        });
    }
    std::string take_sent() { return std::exchange(modem.sent, {}); }
};

}  // namespace ampdesk
