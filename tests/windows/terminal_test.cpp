// The terminal in the main window, over a real line: keys, received text, the Modem menu, unplugging,
// and closing with output that has not left.
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <ctime>

#include "platform/posix/posix_serial_port.h"
#include "tests/platform/far_end.h"
#include "tests/support/full_disk.h"
#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

// The line is named through a link, so that another can take its place.
struct FarModem {
    FarModem() { plug_in(); }
    void plug_in() {
        far = std::make_unique<FarEnd>();
        std::filesystem::remove(device);
        std::filesystem::create_symlink(far->device(), device);
    }
    BusOptions ports() const {
        BusOptions options;
        options.ports.set(2, device);
        return options;
    }
    ScratchFolder link_folder;
    std::string device = link_folder / "modem";
    std::unique_ptr<FarEnd> far;
    ManualClock line_clock;
    struct CountingPort : PosixSerialPort {
        using PosixSerialPort::PosixSerialPort;
        std::string read_waiting() override {
            std::string bytes = PosixSerialPort::read_waiting();
            received += bytes.size();
            return bytes;
        }
        std::size_t received = 0;
    } MSComm1{line_clock};
};

class TerminalWindow : protected FarModem, public Desk {
  protected:
    TerminalWindow() : Desk(&MSComm1, ports()) { Term->setFocus(); }

    void start(const char* content = "ampdesk settings\r\n2\r\n") {
        folder.put("ampdesk.dat", content);
        form.load();
        settle();
    }
    QString status() { return child<QLabel>(form, "StatusLabel")->text(); }
    QString text() const { return Term->toPlainText(); }
    QAction* item(const char* name) { return child<QAction>(*form.menuBar(), name); }
    void receive(std::string_view bytes) {
        MSComm1.received = 0;
        far->send(bytes);
        EXPECT_TRUE(QTest::qWaitFor([&] { return MSComm1.received == bytes.size(); }));
        settle();
    }
    // Types the characters, and lets the station send them.
    void type(const char* characters) {
        QTest::keyClicks(Term, QLatin1String(characters));
        settle();
    }

    TermBox* Term = child<TermBox>(form, "Term");
};

// A key is shown and not sent, sent and not shown, or sent as another character; text comes in at the
// caret instead of the end.
TEST_F(TerminalWindow, KeysGoOutAndTextComesIn) {
    type("off");
    EXPECT_EQ(text(), QStringLiteral("off"));
    start();
    EXPECT_EQ(status(), QStringLiteral("COM2: connected"));
    EXPECT_EQ(form.terminal_port(), 2);
    type("aB-");
    for (const Qt::Key code : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Left, Qt::Key_F1})
        key(code);
    key(Qt::Key_F, Qt::ControlModifier);
    key(Qt::Key_Backspace);
    key(Qt::Key_C, Qt::ControlModifier);
    QApplication::clipboard()->setText(QStringLiteral("p\u00E9\u20ACq\nr\r\ns"));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(far->receive(100, 50), "aB-\r\x1B\t\x06\b\x03p\xE9q\rr\rs");
    // The caret had gone left of the tab, so that the backspace took the line's break.
    EXPECT_EQ(text(), QStringLiteral("offaB-p\u00E9q\nr\ns\t"));
    Term->moveCursor(QTextCursor::Start);
    receive(std::string("A\bB\r\n\bC\x00\xB0", 9));
    EXPECT_EQ(text(), QStringLiteral("offaB-p\u00E9q\nr\ns\tB\nC \u00B0"));
    EXPECT_TRUE(Term->textCursor().atEnd());
}

// A line that orders nothing, behind one that does, which is answered only when another one comes.
TEST_F(TerminalWindow, AWrongLineBehindARequest) {
    start();
    receive("\x06\x06>1,A\r\x06\x06>1;B\r");
    std::string answers;
    EXPECT_TRUE(comes([&] {
        answers += far->receive(100, 1);
        return answers.ends_with("wrong command\r\n");
    })) << answers;
}

// The box grows without end, or keeps everything for an undo that nobody can do.
TEST_F(TerminalWindow, KeepsTheNewestText) {
    start();
    for (const char c : {'a', 'b', 'c', 'd'}) receive(std::string(2047, c) + "\r");
    EXPECT_EQ(text().size(), 8192);
    receive("e");
    EXPECT_EQ(text().toStdString(), std::string(2047, 'c') + "\n" + std::string(2047, 'd') + "\ne");
    EXPECT_FALSE(Term->document()->isUndoAvailable());
}

// Text is kept for a box that nobody can see, or goes on being lost when it is seen again.
TEST_F(TerminalWindow, TextGoesToABoxThatIsSeen) {
    start();
    for (const bool seen : {false, true}) {
        Term->setVisible(seen);
        settle();
        receive(seen ? "seen" : "hidden");
    }
    EXPECT_EQ(text(), QStringLiteral("seen"));
}

// The terminal takes the amplifiers' port, or the dialog's choice is not used, or not kept.
TEST_F(TerminalWindow, Settings) {
    form.load();
    settle();
    when_dialog_opens("ConfigScrn", [this](QDialog& dialog) {
        expect_spoken(dialog, QStringLiteral("Modem Settings"));
        EXPECT_EQ(child<QLabel>(dialog, "lblBusPort")->text(),
                  QStringLiteral("The amplifier bus uses COM1:"));
        child<QComboBox>(dialog, "cboPort")->setCurrentIndex(1);
        when_box_opens();
        click(dialog, "cmdOk");
        let_box_close();
        EXPECT_EQ(told, "COM1: is used by the amplifier bus");
        EXPECT_TRUE(dialog.isVisible());
        child<QComboBox>(dialog, "cboPort")->setCurrentIndex(2);
        child<QComboBox>(dialog, "cboBaud")->setCurrentText(QStringLiteral("1200"));
        child<QCheckBox>(dialog, "chkEcho")->setChecked(false);
        click(dialog, "cmdOk");
    });
    pick("mnuModemItem(2)");
    EXPECT_EQ(file_bytes("ampdesk.dat"), "ampdesk settings\r\n2\r\n1200\r\n8\r\n0\r\n1\r\n0\r\n0\r\n");
    EXPECT_EQ(cfgetospeed(&far->modes()), speed_t{B1200});
    type("AT");
    EXPECT_EQ(far->receive(2), "AT");
    EXPECT_EQ(text(), QString());
}

// The port of the amplifiers is opened at the start because a file says so.
TEST_F(TerminalWindow, LeavesTheAmplifiersPortToThem) {
    start("ampdesk settings\r\n1\r\n");
    EXPECT_EQ(status(), QStringLiteral("COM1: is used by the amplifier bus, the terminal stays closed"));
    EXPECT_FALSE(MSComm1.is_open());
}

TEST_F(TerminalWindow, AutoAnswerChangesItsName) {
    when_box_opens();
    item("mnuModemItem(0)")->trigger();
    let_box_close();
    EXPECT_EQ(told, "The terminal's port is not open");
    start();
    const std::pair<const char*, const char*> steps[] = {{"ATE1M0S0=1\r", "&No Auto Answer"},
                                                         {"ATS0=0\r", "&Auto Answer"}};
    for (const auto& [command, caption] : steps) {
        pick("mnuModemItem(0)");
        EXPECT_EQ(far->receive(20, 50), command);
        EXPECT_EQ(item("mnuModemItem(0)")->text(), QLatin1String(caption));
    }
}

// The log misses a direction, or a disk that fills up ends the terminal.
TEST_F(TerminalWindow, LogUntilTheDiskIsFull) {
    start();
    const std::string path = link_folder / "my.log";
    when_dialog_opens("QFileDialog", [&](QDialog& dialog) {
        child<QLineEdit>(dialog, "fileNameEdit")->setText(QString::fromStdString(path));
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    pick("mnuModemOpt(1)");
    EXPECT_TRUE(item("mnuModemOpt(2)")->isEnabled() && !item("mnuModemOpt(1)")->isEnabled());
    type("A");
    receive("B");
    EXPECT_NE(file_bytes(path).find(" sent     A\r\n"), std::string::npos);
    EXPECT_NE(file_bytes(path).find(" received B\r\n"), std::string::npos);
    when_box_opens([&](QMessageBox& box) { told += '|' + box.informativeText().toStdString(); });
    {
        const FullDisk full(100);
        type("CDE");
        EXPECT_TRUE(QTest::qWaitFor([&] { return !told.empty(); }));
    }
    EXPECT_EQ(told, "The log has been closed|" + path + ": Disk full");
    EXPECT_TRUE(item("mnuModemOpt(1)")->isEnabled() && !item("mnuModemOpt(2)")->isEnabled());
    EXPECT_EQ(far->receive(10, 50), "ACDE");
}

// The window spins on a dead descriptor, or never looks for the line again.
TEST_F(TerminalWindow, AnUnpluggedLineIsFoundAgain) {
    start();
    far->unplug();
    QTest::qWait(20);
    EXPECT_EQ(status(), QStringLiteral("COM2: connection lost, trying again"));
    const std::clock_t before = std::clock();
    QTest::qWait(300);
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
    plug_in();
    type("lost");
    line_clock.advance(std::chrono::seconds(2));
    type("x");
    EXPECT_EQ(status(), QStringLiteral("COM2: connected"));
    EXPECT_EQ(far->receive(10, 50), "x");
    receive("back");
    EXPECT_TRUE(text().endsWith(QStringLiteral("back")));
}

// An error is told without its own title, box upon box, or its Cancel leaves the port open.
TEST_F(TerminalWindow, AnErrorOffersToCloseThePort) {
    start();
    QApplication::clipboard()->setText(QString(70000, u'x'));
    std::string title;
    when_box_opens([&](QMessageBox& box) {
        title = box.windowTitle().toStdString() + "|" + told;
        QTest::keyClick(Term, Qt::Key_V, Qt::ControlModifier);
    });
    for (int i = 0; i < 2; ++i) QTest::keyClick(Term, Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !MSComm1.is_open(); }));
    settle();
    EXPECT_EQ(title, "Click Cancel to quit, OK to ignore.|Transmit Buffer Full");
    EXPECT_EQ(status(), QStringLiteral("COM2: closed"));
    EXPECT_EQ(sounds, 1);
    QTest::qWait(50);  // no second box, which nothing would close
}

// Closing loses output that would still have left, waits for ever for what cannot leave, or says
// nothing about it.
class ClosingTerminal : public TerminalWindow {
  protected:
    void close(bool taken) {
        start();
        constexpr std::size_t k_sent = 40000;  // several times what the driver takes at once
        QApplication::clipboard()->setText(QString(k_sent, u'x'));
        key(Qt::Key_V, Qt::ControlModifier);
        form.close();
        settle();
        EXPECT_EQ(status(), QStringLiteral("Waiting for the terminal's output to leave"));
        clock.advance(milliseconds(2900));
        QTest::qWait(120);
        EXPECT_TRUE(form.isVisible());
        if (!taken) {
            when_box_opens();
            clock.advance(milliseconds(200));
        }
        std::size_t received = 0;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            received += taken ? far->receive(10000, 0).size() : 0;
            return !form.isVisible();
        }));
        EXPECT_EQ(told, taken ? "" : "Data cannot be sent");
        EXPECT_FALSE(MSComm1.is_open());
        if (taken) {
            EXPECT_EQ(received + far->receive(1 << 20, 0).size(), k_sent);
        }
    }
};

TEST_F(ClosingTerminal, WaitsForOutputThatLeaves) {
    close(true);
}

TEST_F(ClosingTerminal, TellsOfOutputThatCannot) {
    close(false);
}

// The status label goes on telling of a port that has been closed, or of what was before a transfer or
// before the settings were put right.
TEST_F(TerminalWindow, TheStatusLabelSaysWhatIsSoNow) {
    const auto choose = [&](int index) {
        when_dialog_opens("ConfigScrn", [&, index](QDialog& dialog) {
            child<QComboBox>(dialog, "cboPort")->setCurrentIndex(index);
            click(dialog, "cmdOk");
        });
        pick("mnuModemItem(2)");
        return status();
    };
    const QString connected = QStringLiteral("COM2: connected");
    std::filesystem::remove(device);
    start();
    EXPECT_TRUE(status().endsWith(QStringLiteral(": no such device"))) << status().toStdString();
    plug_in();
    EXPECT_EQ(choose(2), connected);
    receive("\x1A");
    EXPECT_EQ(status(), QStringLiteral("End of File Detected"));
    EXPECT_EQ(choose(2), connected);
    receive("\x1A");
    when_box_opens();
    item("mnuModemOpt(5)")->trigger();  // the null modem test
    EXPECT_TRUE(comes([&] { return !told.empty(); }));
    EXPECT_EQ(status(), connected);
    EXPECT_EQ(choose(0), QStringLiteral("COM2: closed"));
}

// Form2 goes behind other windows before its button is pressed, or comes back after it.
TEST_F(TerminalWindow, Form2StaysUntilItsButtonIsPressed) {
    start();
    auto* form2 = child(form, "Form2");
    for (int i = 0; i < 2; ++i) {
        child<QAction>(form, "mnuForm2")->trigger();
        EXPECT_TRUE(form2->isVisible() && form2->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        EXPECT_EQ(form2->windowTitle(), QStringLiteral("MSComm Terminal"));
        EXPECT_EQ(child<QLabel>(*form2, "lblState")->text(), QStringLiteral("COM2:  9600,n,8,1"));
        form2->activateWindow();
        QApplication::processEvents();
        form2->hide();  // as if another window took its place
        activate();
        QApplication::processEvents();
        EXPECT_TRUE(form2->isVisible());
        click(*form2, "Command1");
        activate();
        QApplication::processEvents();
        EXPECT_FALSE(form2->isVisible());
    }
}

}  // namespace
}  // namespace ampdesk
