// The main window: menu tree, arrangement, polling beside open boxes, and closing at bad moments.
#include <QFile>
#include <QMenuBar>

#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using MainWindow = Desk;

// Every item of the tree as "name caption state", state being closed/open: with no amplifier and
// with one.
TEST_F(MainWindow, MenuTree) {
    const char* const expected[] = {"mnuMachineItem(0) &New 11",
                                    "mnuMachineItem(1) &Open 11",
                                    "mnuMachineItem(2) &Close 01",
                                    "mnuMachineItem(3) -",
                                    "mnuMachineItem(4) &Save 01",
                                    "mnuMachineItem(5) Save &As 01",
                                    "mnuMachineItem(6) Sa&ve All 01",
                                    "mnuMachineItem(7) -",
                                    "mnuMachineItem(8) E&xit 11",
                                    "mnuModemItem(0) &Auto Answer 11",
                                    "mnuModemItem(1) -",
                                    "mnuModemItem(2) &Settings 11",
                                    "mnuModemOpt(0) &Volume 11",
                                    "mnuModemOpt(1) &Open_log 11",
                                    "mnuModemOpt(2) &Close_Log 00",
                                    "mnuModemOpt(3) &Show Debug 11",
                                    "mnuModemOpt(4) -",
                                    "mnuModemOpt(5) &Null Modem Test 11",
                                    "mnuModemItem(3) &Options 11",
                                    "mnuModemItem(4) -",
                                    "mnuModemItem(5) Sen&d File 11",
                                    "mnuModemItem(6) &Receive File 11",
                                    "mnuModemItem(7) -",
                                    "mnuModemItem(8) &Hang Up Phone 11",
                                    "mnuToolsScreen(0) &Screen Settings 01",
                                    "mnuToolsScreen(1) Make A &Fault 00",
                                    "mnuToolsItem(0) &Amplifier Setup 01",
                                    "mnuToolsItem(1) -",
                                    "mnuToolsItem(2) &Setup_422 11",
                                    "mnuToolsItem(3) &Interactive_422 11",
                                    "mnuToolsSram(0) &Read nvRam 11",
                                    "mnuToolsSram(1) &Set nvRam 11",
                                    "mnuToolsItem(4) nv&Ram Transfer 11",
                                    "mnuWinItem(0) Tile &Horizontally 01",
                                    "mnuWinItem(1) &Tile Vertically 01",
                                    "mnuWinItem(2) &Cascade 01",
                                    "mnuWinItem(3) Arrange &Icons 01",
                                    "mnuWinItem(4) -",
                                    "mnuWinItem(5) &Close All 01",
                                    "mnuHelpItem(0) &Contents 11",
                                    "mnuHelpItem(1) &Index 11",
                                    "mnuHelpItem(2) &Search For Help On 11",
                                    "mnuHelpItem(3) -",
                                    "mnuHelpItem(4) &About 11"};
    std::vector<QAction*> items;
    const std::function<void(const QMenu&)> collect = [&](const QMenu& menu) {
        for (QAction* item : menu.actions()) {
            if (item->menu() != nullptr)
                collect(*item->menu());
            items.push_back(item);
        }
    };
    std::string bar;
    for (QAction* menu : form.menuBar()->actions()) {
        bar += menu->menu()->objectName().toStdString() + " " + menu->text().toStdString() + ";";
        collect(*menu->menu());
    }
    EXPECT_EQ(bar, "mnuMachine &Amplifier;mnuModem Mo&dem;mnuTools &Tools;mnuWin &Window;mnuHelp &Help;");

    std::vector<bool> closed;
    for (const QAction* item : items) closed.push_back(item->isEnabled());
    open(1);
    ASSERT_EQ(items.size(), std::size(expected));
    for (std::size_t i = 0; i < items.size(); ++i) {
        const QAction& item = *items[i];
        std::string state = item.objectName().toStdString() + " ";
        if (item.isSeparator())
            state += "-";
        else
            state += item.text().toStdString() + (closed[i] ? " 1" : " 0") + (item.isEnabled() ? "1" : "0");
        EXPECT_EQ(state, expected[i]);
    }
    form.mnuWinItem_Click(5);
    EXPECT_FALSE(items[2]->isEnabled());
}

TEST_F(MainWindow, AboutShowsItsThreeLines) {
    std::string seen;
    when_box_opens([&](QMessageBox& box) { seen = (box.windowTitle() + u'|' + box.text()).toStdString(); });
    form.mnuHelpItem_Click(4);
    EXPECT_EQ(seen, "About|JEX REMOTE CONTROL PROGRAM\nVersion: 1.2.3\nMay 14, 2008");
}

// Heads stand in the order in which they were opened, an icon stays an icon at the bottom.
TEST_F(MainWindow, ArrangesTheHeads) {
    std::vector<QWidget*> windows;
    for (int address = 1; address <= 3; ++address) windows.push_back(open(address).parentWidget());
    windows[1]->showMinimized();
    auto* area = child<QMdiArea>(form, "MdiArea");
    const int width = area->viewport()->width();

    form.mnuWinItem_Click(0);
    EXPECT_EQ(windows[0]->pos(), QPoint(0, 0));
    EXPECT_EQ(windows[0]->width(), width);
    EXPECT_EQ(windows[2]->geometry().top(), windows[0]->geometry().bottom() + 1);
    EXPECT_TRUE(windows[1]->isMinimized());
    EXPECT_EQ(windows[1]->geometry().bottom() + 1, area->viewport()->height());
    EXPECT_LE(windows[2]->geometry().bottom(), windows[1]->geometry().top());

    form.mnuWinItem_Click(1);
    EXPECT_EQ(windows[2]->x(), windows[0]->geometry().right() + 1);
    EXPECT_EQ(windows[2]->geometry().right() + 1, width);
    EXPECT_EQ(windows[2]->y(), 0);

    form.mnuWinItem_Click(2);
    EXPECT_EQ(windows[0]->pos(), QPoint(0, 0));
    EXPECT_GT(windows[2]->x(), 0);
    EXPECT_EQ(windows[0]->size(), windows[2]->size());

    form.mnuWinItem_Click(5);
    EXPECT_EQ(station.open_count(), 0);
    EXPECT_TRUE(area->subWindowList().isEmpty() || area->currentSubWindow() == nullptr);
}

// A shutdown must be seen and heard while a box waits for an answer, also one of the head whose visit
// the box came up in.
TEST_F(MainWindow, PollingGoesOnBesideABoxOpenedInAVisit) {
    open(1);
    open(2);
    bus.find(1)->faults.overflow_words = true;  // the third failed visit tells "Overflow"
    std::string seen;
    int own_frames = -1;
    when_box_opens([&](QMessageBox& box) {
        seen = box.text().toStdString();
        own_frames = frames_sent[1];
        const int others = frames_sent[2];
        for (const int address : {1, 2}) bus.find(address)->shut_down(7, "Helix");
        EXPECT_TRUE(QTest::qWaitFor([&] {
            clock.advance(std::chrono::milliseconds(100));
            return sounds > 0 && frames_sent[1] > own_frames && frames_sent[2] > others;
        }));
    });
    EXPECT_TRUE(QTest::qWaitFor([&] {
        clock.advance(std::chrono::milliseconds(100));
        return own_frames >= 0 && frames_sent[1] > own_frames;
    }));
    EXPECT_EQ(seen, "Overflow");
    for (const auto& head : station.open_heads())
        EXPECT_EQ(head->panel().line(1).substr(0, 19), "System Shutdown, #7");
    bus.find(1)->clear_faults();
}

// An amplifier in trouble whose window is an icon, or one that is well again and still said to be not.
TEST_F(MainWindow, TroublesOfCoveredHeadsAreTold) {
    for (int address = 1; address <= 3; ++address) open(address).parentWidget()->showMinimized();
    const auto* label = child<QLabel>(form, "TroubleLabel");
    const auto tells = [&](const char* text) {
        return QTest::qWaitFor([&] {
            clock.advance(std::chrono::milliseconds(100));
            return label->text() == QLatin1String(text);
        });
    };
    for (const int address : {1, 3}) bus.find(address)->shut_down(7, "Helix");
    bus.find(2)->line.silent = true;
    EXPECT_TRUE(tells("Shutdown: 1001, 1003   No answer: 1002"));
    bus.find(1)->clear_faults();
    bus.find(2)->line.silent = false;
    EXPECT_TRUE(tells("Shutdown: 1003"));
    station.close_window(3);
    EXPECT_TRUE(tells(""));
}

// A click that is carried out while a visit lets events run may open a box too; the rule that keeps
// visits from nesting there must not stop the polling for as long as that box is open.
TEST_F(MainWindow, PollingGoesOnBesideABoxOpenedWhileEventsRun) {
    open(1);
    when_box_opens([&](QMessageBox&) {
        const int before = frames_sent[1];
        EXPECT_TRUE(QTest::qWaitFor([&] {
            clock.advance(std::chrono::milliseconds(100));
            return frames_sent[1] > before;
        }));
    });
    QTimer::singleShot(0, &form, [&] { form.mnuHelpItem_Click(4); });
    person.let_events_run();

    const int before = frames_sent[1];
    clock.advance(std::chrono::seconds(1));
    QTest::qSleep(300);  // the poll timer is due
    person.let_events_run();
    EXPECT_EQ(frames_sent[1], before);
}

// Closing a head from inside its own visit must leave nothing that the visit still needs.
TEST_F(MainWindow, ClosingAHeadInsideItsOwnVisit) {
    open(1);
    open(2);
    bus.find(1)->faults.overflow_words = true;
    bool closed = false;
    when_box_opens([&](QMessageBox&) {
        station.close_window(1);
        closed = true;
    });
    int others = -1;
    EXPECT_TRUE(QTest::qWaitFor([&] {
        clock.advance(std::chrono::milliseconds(100));
        if (closed && others < 0)
            others = frames_sent[2];
        return closed && frames_sent[2] > others + 3;
    }));
    EXPECT_EQ(station.open_count(), 1);
    EXPECT_EQ(form.active_machine()->windowTitle(), QStringLiteral("JEX Amplifier 1002"));
}

// The window's own close button ends the amplifier, and the last one ends the polling.
TEST_F(MainWindow, ClosingTheLastWindowEndsThePolling) {
    open(1).parentWidget()->close();
    EXPECT_EQ(station.open_count(), 0);
    const int frames = frames_sent[1];
    clock.advance(std::chrono::seconds(2));
    QTest::qWait(350);
    EXPECT_EQ(frames_sent[1], frames);
    EXPECT_TRUE(QFile::exists(QStringLiteral("set1001.dat")));
    open(2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return frames_sent[2] > 8; }));
}

// A file of another kind under the settings' name must stop the start of the amplifiers; otherwise the
// start-up timer goes off, and here misses the amplifier's file.
TEST_F(MainWindow, AmpdeskFileDecidesAboutTheStart) {
    const char* const started = "Couldn't find file com5.dat";
    const struct {
        const char* content;
        const char* box;
        std::optional<int> port;
    } cases[] = {{nullptr, started, {}},
                 {"ampdesk settings\r\n 3 \r\n", started, 3},
                 {"ampdesk settings\r\n9\r\n", started, {}},
                 {"something else\r\n3\r\n", "Invalid file format", {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content == nullptr ? "missing" : c.content);
        QFile file(QStringLiteral("ampdesk.dat"));
        file.remove();
        if (c.content != nullptr && file.open(QIODevice::WriteOnly))
            file.write(c.content);
        file.close();
        MDIForm1 fresh(station, link, terminal_line, person,
                       {.version = {}, .gauge = {}, .amplifier_files = {"com5.dat"}});
        std::string seen;
        when_box_opens([&](QMessageBox& box) { seen = box.text().toStdString(); });
        fresh.load();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !seen.empty(); }));
        QTest::qWait(20);  // no second box, which nothing would close
        EXPECT_EQ(seen, c.box);
        EXPECT_EQ(fresh.terminal_port(), c.port);
    }
}

}  // namespace
}  // namespace ampdesk
