// The main window: menu tree, arrangement, polling beside open boxes, and closing at bad moments.
#include <QMenuBar>

#include "platform/text_file.h"
#include "station/station_thread.h"
#include "tests/support/served_line.h"
#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using MainWindow = Desk;

// An item that acts on an amplifier while none is open, that sleeps although it could act, or that the
// keyboard does not reach.
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
    open(1);
    EXPECT_EQ(asleep(), QStringLiteral("mnuModemOpt(2) mnuToolsScreen(1)"));
    pick("mnuWinItem(5)");
    EXPECT_EQ(asleep(), without);
}

// An item that assistive technology triggers past an open box or dialog, which it would close or open a
// second time; a tool window beside the main window that puts the menu to sleep.
TEST_F(MainWindow, ABoxHoldsTheMenu) {
    QMenuBar bar;
    int calls = 0;
    MainMenu menu(bar, false);
    const auto count = [&] { ++calls; };
    QAction* debug = nullptr;
    menu.add(
        {.name = "mnuHelp",
         .caption = "&Help",
         .array = "mnuHelpItem",
         .rows = {
             {"&About", count},
             {.caption = "&Options",
              .array = "mnuModemOpt",
              .rows = {{.caption = "&Show Debug", .click = count, .checkable = true, .item = &debug}}}}});
    const auto trigger_all = [&] {
        calls = 0;
        for (QAction* item : bar.findChildren<QAction*>())
            if (!item->objectName().isEmpty() && item->menu() == nullptr)
                item->trigger();
        return calls;
    };
    EXPECT_EQ(trigger_all(), 2);
    EXPECT_TRUE(debug->isChecked());
    QDialog tool(&form);
    tool.show();
    EXPECT_EQ(trigger_all(), 2);
    EXPECT_FALSE(debug->isChecked());
    when_box_opens([&](QMessageBox& box) {
        EXPECT_EQ(trigger_all(), 0);
        EXPECT_FALSE(debug->isChecked());
        auto* help = child<QMenu>(bar, "mnuHelp");
        help->popup({});
        EXPECT_TRUE(QTest::qWaitFor([&] { return help->isHidden(); }));
        QDialog nested(&box);
        nested.open();
        EXPECT_EQ(trigger_all(), 0);
    });
    person.ask({});
}

// Heads stand in the order in which they were opened, an icon stays an icon at the bottom.
TEST_F(MainWindow, ArrangesTheHeads) {
    std::vector<QWidget*> windows;
    for (int address = 1; address <= 3; ++address) windows.push_back(open(address).parentWidget());
    windows[1]->showMinimized();
    auto* area = child<QMdiArea>(form, "MdiArea");
    const int width = area->viewport()->width();

    pick("mnuWinItem(0)");
    EXPECT_EQ(windows[0]->pos(), QPoint(0, 0));
    EXPECT_EQ(windows[0]->width(), width);
    EXPECT_EQ(windows[2]->geometry().top(), windows[0]->geometry().bottom() + 1);
    EXPECT_TRUE(windows[1]->isMinimized());
    EXPECT_EQ(windows[1]->geometry().bottom() + 1, area->viewport()->height());
    EXPECT_LE(windows[2]->geometry().bottom(), windows[1]->geometry().top());

    pick("mnuWinItem(1)");
    EXPECT_EQ(windows[2]->x(), windows[0]->geometry().right() + 1);
    EXPECT_EQ(windows[2]->geometry().right() + 1, width);
    EXPECT_EQ(windows[2]->y(), 0);

    pick("mnuWinItem(2)");
    EXPECT_EQ(windows[0]->pos(), QPoint(0, 0));
    EXPECT_GT(windows[2]->x(), 0);
    EXPECT_EQ(windows[0]->size(), windows[2]->size());

    pick("mnuWinItem(5)");
    EXPECT_EQ(station.open_count(), 0);
    EXPECT_TRUE(area->subWindowList().isEmpty() || area->currentSubWindow() == nullptr);
}

// A shutdown must be seen and heard while a box waits for an answer, also one of the head whose visit
// the box came up in; closing that head leaves nothing that the visit still needs.
TEST_F(MainWindow, PollingGoesOnBesideABoxOpenedInAVisit) {
    open(1);
    open(2);
    bus.find(1)->faults.overflow_words = true;  // the third failed visit tells "Overflow"
    int own_frames = -1;
    when_box_opens([&](QMessageBox&) {
        own_frames = frames_sent[1];
        const int others = frames_sent[2];
        for (const int address : {1, 2}) bus.find(address)->shut_down(7, "Helix");
        EXPECT_TRUE(
            comes([&] { return sounds > 0 && frames_sent[1] > own_frames && frames_sent[2] > others; }));
        for (const auto& head : station.open_heads())
            EXPECT_EQ(head->panel().line(1).substr(0, 19), "System Shutdown, #7");
        station.close_window(1);
    });
    EXPECT_TRUE(comes([&] { return own_frames >= 0; }));
    EXPECT_EQ(told, "Overflow");
    const int others = frames_sent[2];
    EXPECT_TRUE(comes([&] { return frames_sent[2] > others + 3; }));
    EXPECT_EQ(form.active_machine()->windowTitle(), QStringLiteral("JEX Amplifier 1002"));
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

// The polling stops for as long as a box is open.
TEST_F(MainWindow, PollingGoesOnBesideABox) {
    open(1);
    when_box_opens([&](QMessageBox&) {
        const int before = frames_sent[1];
        EXPECT_TRUE(comes([&] { return frames_sent[1] > before; }));
    });
    pick("mnuHelpItem(4)");
    EXPECT_EQ(told, "JEX REMOTE CONTROL PROGRAM\nVersion: 1.2.3\nMay 14, 2008");
}

// The window's own close button ends the amplifier, and the last one ends the polling.
TEST_F(MainWindow, ClosingTheLastWindowEndsThePolling) {
    open(1).parentWidget()->close();
    settle();
    EXPECT_EQ(station.open_count(), 0);
    const int frames = frames_sent[1];
    clock.advance(std::chrono::seconds(2));
    QTest::qWait(350);
    EXPECT_EQ(frames_sent[1], frames);
    EXPECT_TRUE(file_exists("set1001.dat"));
    open(2);
    EXPECT_TRUE(comes([&] { return frames_sent[2] > 8; }));
}

// The program as it is put together, with the station on its thread: a line that is not watched, or no longer
// once it was closed, so that every reply is found late; a window that does not go, or before the station.
TEST(MainWindowThread, OpensClosesAndEnds) {
    const ScratchFolder folder;
    std::filesystem::current_path(folder.path());
    folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
    const std::unique_ptr<Clock> clock = make_system_clock();
    demo::SimBus sim(*clock);
    sim.add({.address = 1, .serial = 1001, .name = "C/KU/X", .noise = 0});
    const ServedLine line(sim, folder / "line");
    const std::unique_ptr<SerialPort> port = make_serial_port(*clock);
    BusOptions options;
    options.ports.set(1, folder / "line");
    QtOperator person;
    Talk talk;
    StationHost host(talk, {*port}, *clock, {.bus = options});
    const std::unique_ptr<LineWait> wait = make_line_wait(*clock);
    MDIForm1 form(talk, *clock, person, {.version = "1.2.3", .gauge = {30, 60}, .amplifier_files = {}});
    const StationThread thread(talk, host, *wait);
    form.show();
    for (int round = 0; round < 2; ++round) {
        talk.acts.put(act::OpenFile{"com1001.dat"});
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                const frmMachine* machine = form.active_machine();
                return machine != nullptr && machine->view().panel.legend(3) == "MORE";
            },
            1000));
        form.findChild<QAction*>(QStringLiteral("mnuWinItem(5)"))->trigger();
        EXPECT_TRUE(QTest::qWaitFor([&] { return form.active_machine() == nullptr; }, 600));
        std::filesystem::remove("set1001.dat");  // nobody is asked about it
    }
    form.close();
    EXPECT_TRUE(form.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !form.isVisible(); }, 600));
    EXPECT_TRUE(file_exists("layout.dat"));
    QDir::setCurrent(QDir::rootPath());
}

// The status label goes on telling of a lost line that has been given up for another.
TEST_F(MainWindow, ALostLineIsNotToldOfForEver) {
    open(1);
    port.on_connection_change(false);
    form.take_notices();
    auto* status = child<QLabel>(form, "StatusLabel");
    EXPECT_EQ(status->text(), QStringLiteral("COM1: connection lost, trying again"));
    link.open_bus_port("COM3:", 9600, 0, 8, 1);
    EXPECT_TRUE(comes([&] { return status->text() == u"COM3: connected"; }));
    port.on_connection_change(false);
    form.take_notices();
    link.close_bus_port();
    EXPECT_TRUE(comes([&] { return status->text() == u"COM3: closed"; }));
}

// A file of another kind under the settings' name that does not stop the start of the amplifiers, or a
// start-up timer that does not go off; a notice that holds the amplifiers up, or is never told.
TEST_F(MainWindow, AmpdeskFileDecidesAboutTheStart) {
    bus.add({.address = 1, .serial = 1001, .noise = 0});
    folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
    std::vector<std::string> boxes;
    const Station* fresh_station = nullptr;
    person.on_ask = [&](const Message& message) {
        boxes.push_back(message.text + ", open: " + std::to_string(fresh_station->open_count()));
        return Answer::ok;
    };
    const std::vector<std::string> started = {"Couldn't find file com5.dat, open: 1", "notice, open: 1"};
    const struct {
        const char* content;
        std::vector<std::string> boxes;
        std::optional<int> port;
    } cases[] = {{nullptr, started, {}},
                 {"ampdesk settings\r\n 3 \r\n", started, 3},
                 {"something else\r\n3\r\n", {"Invalid file format, open: 0", "notice, open: 0"}, {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content == nullptr ? "missing" : c.content);
        if (c.content != nullptr)
            folder.put("ampdesk.dat", c.content);
        Talk fresh_talk;
        StationHost fresh_host(fresh_talk, {port}, clock, {});
        fresh_station = &fresh_host.station();
        another = &fresh_host;
        MDIForm1 fresh(fresh_talk, clock, person,
                       {.version = {},
                        .gauge = {},
                        .amplifier_files = {"com1001.dat", "com5.dat"},
                        .notices = {{.text = "notice", .detail = {}}}});
        boxes.clear();
        fresh.load();
        EXPECT_TRUE(comes([&] { return boxes.size() >= 2; }));
        EXPECT_EQ(boxes, c.boxes);
        EXPECT_EQ(fresh.terminal_port(), c.port);
        another = nullptr;
    }
}

}  // namespace
}  // namespace ampdesk
