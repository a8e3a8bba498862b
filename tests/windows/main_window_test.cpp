// The main window: menu tree, arrangement, what it tells of its amplifiers, and the start.
#include <QMenuBar>

#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

struct MainWindow : Desk {
    MainWindow()
        : Desk(nullptr, {},
               {.version = "1.2.3",
                .gauge = {},
                .amplifier_files = {"com1001.dat", "com5.dat"},
                .notices = {{.text = "notice", .detail = {}}}}) {}
};

// An item that acts on an amplifier while none is open, that sleeps although it could act, or that the
// keyboard does not reach; a window's own close button that leaves the amplifier open, or loses its colours.
TEST_F(MainWindow, MenuItemsLiveWhileTheyCanAct) {
    const auto asleep = [this] {
        QStringList names;
        for (const QAction* item : form.menuBar()->findChildren<QAction*>()) {
            if (item->isSeparator() || item->objectName().isEmpty())
                continue;
            EXPECT_TRUE(item->text().contains(u'&')) << item->objectName().toStdString();
            if (!item->isEnabled())
                names << item->objectName();
        }
        names.sort();
        return names.join(u' ');
    };
    const QString without = QStringLiteral(
        "mnuMachineItem(2) mnuMachineItem(4) mnuMachineItem(5) mnuMachineItem(6) mnuModemOpt(2) "
        "mnuToolsItem(0) mnuToolsScreen(0) mnuToolsScreen(1) mnuWinItem(0) mnuWinItem(1) mnuWinItem(2) "
        "mnuWinItem(3) mnuWinItem(5)");
    EXPECT_EQ(asleep(), without);
    const frmMachine& machine = open(1);
    EXPECT_EQ(asleep(), QStringLiteral("mnuModemOpt(2) mnuToolsScreen(1)"));
    machine.parentWidget()->close();
    settle();
    EXPECT_EQ(station.open_count(), 0);
    EXPECT_NE(file_bytes("set1001.dat"), "");
    EXPECT_EQ(asleep(), without);
    when_box_opens();
    pick("mnuHelpItem(4)");
    EXPECT_EQ(told, "JEX REMOTE CONTROL PROGRAM\nVersion: 1.2.3\nMay 14, 2008");
}

// An item that assistive technology triggers past an open box or dialog, which it would close or open a
// second time; a menu that takes the keys from it; a tool window beside the main window that puts it to
// sleep.
TEST_F(MainWindow, ABoxHoldsTheMenu) {
    auto* item = child<QAction>(form, "mnuModemOpt(3)");
    QDialog tool(&form);
    tool.show();
    item->trigger();
    when_box_opens([&](QMessageBox&) {
        item->trigger();
        EXPECT_TRUE(child(form, "DebugDock")->isVisible() && item->isChecked());
        auto* opened = child<QMenu>(form, "mnuModem");
        opened->popup({});
        EXPECT_TRUE(soon([&] { return opened->isHidden(); }));
    });
    person.ask({});
}

// Heads stand in the order in which they were opened, an icon stays an icon at the bottom.
TEST_F(MainWindow, ArrangesTheHeads) {
    std::vector<QWidget*> windows;
    for (int address = 1; address <= 3; ++address) windows.push_back(open(address).parentWidget());
    windows[1]->showMinimized();
    auto* area = child<QMdiArea>(form, "MdiArea");
    const QRect& first = windows[0]->geometry();
    const QRect& icon = windows[1]->geometry();
    const QRect& last = windows[2]->geometry();
    pick("mnuWinItem(0)");
    EXPECT_EQ(first.topLeft(), QPoint(0, 0));
    EXPECT_EQ(last.topLeft(), QPoint(0, first.bottom() + 1));
    EXPECT_EQ(first.width(), area->viewport()->width());
    EXPECT_EQ(icon.bottom() + 1, area->viewport()->height());
    EXPECT_LE(last.bottom(), icon.top());

    pick("mnuWinItem(1)");
    EXPECT_EQ(last.topLeft(), QPoint(first.right() + 1, 0));
    EXPECT_EQ(last.right() + 1, area->viewport()->width());

    pick("mnuWinItem(2)");
    EXPECT_EQ(first.topLeft(), QPoint(0, 0));
    EXPECT_TRUE(last.x() > 0 && last.y() > 0);

    pick("mnuWinItem(5)");
    EXPECT_EQ(station.open_count(), 0);
}

// A shutdown must be seen and heard while a box waits for an answer; closing the head that the box is about
// leaves nothing that is still needed.
TEST_F(MainWindow, PollingGoesOnBesideABox) {
    open(1);
    open(2);
    bus.find(1)->faults.overflow_words = true;  // the third failed visit tells "Overflow"
    const auto* line = child<QLabel>(*form.active_machine(), "lblDisplayA(0)");
    when_box_opens([&](QMessageBox&) {
        bus.find(2)->shut_down(7, "Helix");
        EXPECT_TRUE(comes([&] { return sounds > 0; }));
        EXPECT_TRUE(line->text().startsWith(u"System Shutdown, #7"));
        station.close_window(1);
    });
    EXPECT_TRUE(comes([&] { return told == "Overflow" && !box_watch.isActive(); }));
    settle();
    EXPECT_EQ(form.active_machine()->windowTitle(), u"JEX Amplifier 1002");
}

// An amplifier in trouble whose window is an icon, or one that is well again and still said to be not.
TEST_F(MainWindow, TroublesOfCoveredHeadsAreTold) {
    for (int address = 1; address <= 3; ++address) open(address).parentWidget()->showMinimized();
    const auto* label = child<QLabel>(form, "TroubleLabel");
    const auto tells = [&](const char* text) {
        return comes([&] { return label->text() == QLatin1String(text); });
    };
    for (const int address : {1, 3}) bus.find(address)->shut_down(7, "Helix");
    bus.find(2)->line.silent = true;
    EXPECT_TRUE(tells("Shutdown: 1001, 1003   No answer: 1002"));
    bus.find(1)->clear_faults();
    bus.find(2)->line.silent = false;
    EXPECT_TRUE(tells("Shutdown: 1003"));
    // All of them would push the other messages, and half of themselves, off the line.
    for (int address = 4; address <= 10; ++address) {
        open(address);
        bus.find(address)->shut_down(7, "Helix");
    }
    EXPECT_TRUE(tells("Shutdown: 1003, 1004, 1005, 1006, 1007, 1008 and 2 more"));
    EXPECT_TRUE(label->toolTip().endsWith(QLatin1String("1008, 1009, 1010")));
    station.close_all();
    EXPECT_TRUE(tells(""));
}

// A start-up timer that does not go off, or not with what the program was given; a notice that holds the
// amplifiers up.
TEST_F(MainWindow, StartsWithWhatItWasGiven) {
    bus.add({.address = 1, .serial = 1001, .noise = 0});
    folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
    person.keeps = true;
    form.load();
    EXPECT_TRUE(comes([&] { return kept_boxes.size() >= 2; }));
    EXPECT_EQ(kept_boxes, std::vector<std::string>({"Couldn't find file com5.dat", "notice"}));
    EXPECT_EQ(station.open_count(), 1);
}

}  // namespace
}  // namespace ampdesk
