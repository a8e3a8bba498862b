// The windows of file transfers and of the traffic view.
#include <QClipboard>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QSpinBox>

#include "terminal/xmodem_block.h"
#include "tests/support/full_disk.h"
#include "tests/windows/modem_desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

struct TransferWindows : ModemDesk {
    TransferWindows() { start(); }

    TransferDialog& open_dialog(const char* item) {
        pick(item);
        return *child<TransferDialog>(form, "frmTransfer");
    }
    static std::string state(const QWidget& dialog) {
        return child<QLabel>(dialog, "lblState")->text().toStdString();
    }
};

// Fault: another file is sent, or none; a second dialog fights for the line.
TEST_F(TransferWindows, SendsAFile) {
    folder.put("file", "hello");
    TransferDialog& dialog = open_dialog("mnuModemItem(5)");
    expect_spoken(dialog, QStringLiteral("Send File"));
    when_asked_for_a_file(folder / "file");
    click(dialog, "cmdStart");
    EXPECT_EQ(state(dialog), "0 bytes of 5, waiting for the other side");
    EXPECT_EQ(&open_dialog("mnuModemItem(6)"), &dialog);
}

// Fault: cancelling closes the window before it has said what became of the file; Escape throws an hour's
// transfer away; what could not be kept is not asked for again, or End does not end.
TEST_F(TransferWindows, ReceivesCancelsAndCloses) {
    QPointer<TransferDialog> dialog = &open_dialog("mnuModemItem(6)");
    when_asked_for_a_file(folder / "file");
    click(*dialog, "cmdStart");
    receive(xmodem_block(1, "a", XmodemCheck::crc));
    EXPECT_TRUE(state(*dialog).starts_with("128 bytes")) << state(*dialog);
    QTest::keyClick(dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog->running());
    click(*dialog, "cmdCancel");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(comes([&] { return !dialog->running(); }));
    EXPECT_EQ(state(*dialog), "Cancelled.");

    child<QAbstractButton>(*dialog, "optKind(1)")->click();
    when_asked_for_a_file(folder / "text");
    click(*dialog, "cmdStart");
    receive("line\r\n");
    auto full = std::make_unique<FullDisk>();
    when_box_opens([&](QMessageBox&) {
        full.reset();
        when_asked_for_a_file(folder / "other");
    });
    click(*dialog, "cmdEnd");
    EXPECT_TRUE(comes([&] { return !dialog->running(); }));
    EXPECT_EQ(file_bytes("other"), "line\r\n");
    click(*dialog, "cmdCancel");
    EXPECT_TRUE(soon([&] { return dialog.isNull(); }));
}

// Fault: a transfer whose dialog was closed before it was known to have begun goes on unseen.
TEST_F(TransferWindows, BeginsNowhereWithoutItsDialog) {
    QPointer<TransferDialog> first = &open_dialog("mnuModemItem(6)");
    when_asked_for_a_file(folder / "file");
    turns.stop();
    first->cmdStart_Click();
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    settle();
    TransferDialog& second = open_dialog("mnuModemItem(5)");
    EXPECT_TRUE(second.running());
    EXPECT_EQ(second.windowTitle(), u"Receive File");
}

struct TrafficView : TransferWindows {
    TrafficView() {
        for (const int unit : {1, 2}) bus.add({.address = unit, .noise = 0});
        pick("mnuModemOpt(3)");
    }
    void exchange(std::int16_t unit) {
        std::string reply;
        link.bus_command(unit, "\x11", reply);
        settle();
    }
    // The view's lines from the direction on, a little later: the newest may still grow.
    void expect_lines(const QString& lines) {
        clock.advance(std::chrono::milliseconds(40));
        const auto* view = child<QPlainTextEdit>(form, "txtTraffic");
        const auto shown = [&] {
            QStringList all = view->toPlainText().split(u'\n');
            for (QString& line : all) line = line.mid(14, 18).simplified();
            return all.join(u'|');
        };
        EXPECT_TRUE(soon([&] { return shown() == lines; })) << shown().toStdString();
    }
};

// Fault: the view misses or doubles entries when its filter or the pause changes, and saves something
// else than it was asked to show; the lines are watched while nobody looks, or not any more afterwards.
TEST_F(TrafficView, FiltersPausesAndSaves) {
    auto* dock = child(form, "DebugDock");
    auto* unit = child<QSpinBox>(*dock, "spnUnit");
    auto* direction = child<QComboBox>(*dock, "cboDirection");
    auto* line = child<QComboBox>(*dock, "cboLine");
    exchange(1);
    exchange(2);
    talk.acts.put(act::TypeText{"ATZ\r"});
    settle();
    const QString two = QStringLiteral("unit 02 sent|unit 02 received");
    expect_lines(QStringLiteral("unit 01 sent|unit 01 received|") + two + QStringLiteral("|terminal sent"));
    unit->setValue(2);
    expect_lines(two);
    click(*dock, "cmdPause");
    exchange(2);
    direction->setCurrentIndex(1);
    expect_lines(QStringLiteral("unit 02 received"));
    click(*dock, "cmdPause");
    expect_lines(QStringLiteral("unit 02 received|unit 02 received"));
    direction->setCurrentIndex(2);
    unit->setValue(-1);
    line->setCurrentIndex(2);
    expect_lines(QStringLiteral("terminal sent"));
    for (QComboBox* list : {direction, line}) list->setCurrentIndex(0);
    child<QLineEdit>(*dock, "txtFilter")->setText(QStringLiteral("atz"));
    expect_lines(QStringLiteral("terminal sent"));
    click(*dock, "cmdCopy");
    EXPECT_TRUE(QApplication::clipboard()->text().endsWith(u" ATZ."));
    when_asked_for_a_file(folder / "traffic.txt");
    click(*dock, "cmdSave");
    EXPECT_TRUE(file_bytes("traffic.txt").ends_with(" ATZ.\r\n"));
    click(*dock, "cmdClear");
    expect_lines(QString());

    const auto* item = child<QAction>(form, "mnuModemOpt(3)");
    EXPECT_TRUE(item->isChecked());
    dock->close();
    settle();
    EXPECT_FALSE(item->isChecked());
    EXPECT_EQ(link.on_traffic, nullptr);
    child<QLineEdit>(*dock, "txtFilter")->clear();
    pick("mnuModemOpt(3)");
    exchange(2);
    expect_lines(two);
}

}  // namespace
}  // namespace ampdesk
