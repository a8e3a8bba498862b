// The terminal in the main window: keys, received text, the Modem menu, and closing with output that has not
// left.
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>

#include "tests/windows/modem_desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

struct TerminalWindow : ModemDesk {
    TerminalWindow() { Term->setFocus(); }

    QString status() { return child<QLabel>(form, "StatusLabel")->text(); }
    QString text() const { return Term->toPlainText(); }
    void paste(const QString& text) {
        QApplication::clipboard()->setText(text);
        key(Qt::Key_V, Qt::ControlModifier);
    }

    TermBox* Term = child<TermBox>(form, "Term");
};

// A key is shown and not sent, sent and not shown, or sent as another character; text comes in at the
// caret instead of the end, or goes to a box that nobody can see; a box that grows without end, or keeps
// everything for an undo that nobody can do.
TEST_F(TerminalWindow, KeysGoOutAndTextComesIn) {
    QTest::keyClicks(Term, QStringLiteral("off"));
    settle();
    start();
    EXPECT_EQ(status(), QStringLiteral("COM2: connected"));
    QTest::keyClicks(Term, QStringLiteral("aB-"));
    for (const Qt::Key code : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Left, Qt::Key_F1})
        key(code);
    key(Qt::Key_F, Qt::ControlModifier);
    key(Qt::Key_Backspace);
    key(Qt::Key_C, Qt::ControlModifier);
    paste(QStringLiteral("p\u00E9\u20ACq\nr\r\ns"));
    EXPECT_EQ(take_sent(), "aB-\r\x1B\t\x06\b\x03p\xE9q\rr\rs");
    // The caret had gone left of the tab: the backspace took the line's break.
    EXPECT_EQ(text(), QStringLiteral("offaB-p\u00E9q\nr\ns\t"));
    Term->moveCursor(QTextCursor::Start);
    receive(std::string("A\bB\r\n\bC\x00\xB0", 9));
    for (const bool seen : {false, true}) {
        Term->setVisible(seen);
        settle();
        receive(seen ? "seen" : "hidden");
    }
    EXPECT_EQ(text(), QStringLiteral("offaB-p\u00E9q\nr\ns\tB\nC \u00B0seen"));

    Term->clear();
    for (const char c : {'a', 'b', 'c', 'd', 'e'}) receive(std::string(2047, c) + "\r");
    EXPECT_EQ(text().size(), 3 * 2048);
    EXPECT_TRUE(text().startsWith(u'c') && text().endsWith(QStringLiteral("ee\n")));
    EXPECT_FALSE(Term->document()->isUndoAvailable());
}

// The terminal takes the amplifiers' port, or one of the dialog's choices is not used, or not shown the next
// time.
TEST_F(TerminalWindow, Settings) {
    form.load();
    settle();
    const auto choose = [](const QDialog& dialog, const char* list, const char* text) {
        auto* box = child<QComboBox>(dialog, list);
        box->setCurrentIndex(box->findText(QLatin1String(text), Qt::MatchStartsWith));
    };
    when_dialog_opens("ConfigScrn", [&](QDialog& dialog) {
        expect_spoken(dialog, QStringLiteral("Modem Settings"));
        choose(dialog, "cboPort", "COM1:");
        when_box_opens();
        click(dialog, "cmdOk");
        let_box_close();
        EXPECT_EQ(told, "COM1: is used by the amplifier bus");
        for (const auto& [list, text] : {std::pair{"cboPort", "COM2:"},
                                         {"cboBaud", "1200"},
                                         {"cboBits", "7"},
                                         {"cboParity", "Even"},
                                         {"cboStop", "2"},
                                         {"cboHandshake", "XON"}})
            choose(dialog, list, text);
        child<QCheckBox>(dialog, "chkEcho")->setChecked(false);
        click(dialog, "cmdOk");
    });
    pick("mnuModemItem(2)");
    when_dialog_opens("ConfigScrn", [this](QDialog& dialog) { click(dialog, "cmdOk"); });
    pick("mnuModemItem(2)");
    EXPECT_EQ(file_bytes("ampdesk.dat"), "ampdesk settings\r\n2\r\n1200\r\n7\r\n2\r\n2\r\n1\r\n0\r\n");
    QTest::keyClicks(Term, QStringLiteral("not shown"));
    EXPECT_EQ(text(), QString());
}

// An item of the Modem menu that does nothing or something else, or is called what it does no more.
TEST_F(TerminalWindow, ItemsOfTheModemMenu) {
    start();
    const auto* answer = child<QAction>(form, "mnuModemItem(0)");
    pick("mnuModemItem(0)");
    EXPECT_EQ(answer->text(), u"&No Auto Answer");
    pick("mnuModemItem(0)");
    EXPECT_EQ(answer->text(), u"&Auto Answer");
    when_dialog_opens("frmVolume", [](QDialog& dialog) {
        child<QAbstractButton>(dialog, "optVolume(3)")->click();
        dialog.accept();
    });
    pick("mnuModemOpt(0)");
    EXPECT_EQ(take_sent(), "ATE1M0S0=1\rATS0=0\rATL3M1\r");

    when_asked_for_a_file(folder / "my.log");
    for (const char* item : {"mnuModemOpt(1)", "mnuModemOpt(2)"}) {
        pick(item);
        EXPECT_FALSE(child<QAction>(form, item)->isEnabled());
        receive("B");
    }
    EXPECT_TRUE(file_bytes("my.log").ends_with(" received B\r\n"));

    when_box_opens([this](QMessageBox& box) { told = box.windowTitle().toStdString(); });
    pick("mnuModemOpt(5)");
    EXPECT_TRUE(comes([this] { return told == "Null Modem Test"; }));
    take_sent();
    pick("mnuModemItem(8)");
    EXPECT_TRUE(comes([this] { return modem.sent == "+++ATH\r"; })) << modem.sent;
}

// The window goes before what there is to tell has been seen, or does not go.
TEST_F(TerminalWindow, ClosingWaitsForTheOutput) {
    start();
    modem.drained = false;
    form.close();
    settle();
    EXPECT_EQ(status(), u"Waiting for the terminal's output to leave");
    EXPECT_TRUE(form.isVisible());
    when_box_opens([this](QMessageBox&) { EXPECT_TRUE(form.isVisible()); });
    EXPECT_TRUE(comes([this] { return !form.isVisible(); }));
    EXPECT_EQ(told, "Data cannot be sent");
}

// Form2 goes behind other windows before its button is pressed, or comes back after it.
TEST_F(TerminalWindow, Form2StaysUntilItsButtonIsPressed) {
    pick("mnuForm2");
    auto* form2 = child(form, "Form2");
    EXPECT_TRUE(form2->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    for (const bool seen : {true, false}) {
        form2->activateWindow();
        QApplication::processEvents();
        if (seen)
            form2->hide();  // as if another window took its place
        else
            click(*form2, "Command1");
        activate();
        QApplication::processEvents();
        EXPECT_EQ(form2->isVisible(), seen);
    }
}

}  // namespace
}  // namespace ampdesk
