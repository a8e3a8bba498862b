// The amplifier window: keys, lamps and scroll bar to the bus, and what a screen reader sees.
#include <QWheelEvent>

#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using Commands = std::vector<std::string>;

struct HeadWindow : Desk {
    frmMachine& machine = open(1);
    const std::shared_ptr<ControlHead> its_head = head_of(machine);
    const Head& head = its_head->state();
    HeadView shown = machine.view();
    PanelScrollBar& bar = machine.panel_view().scroll_bar();
};

// A key wired to the wrong setting would switch the wrong thing on the amplifier.
TEST_F(HeadWindow, HardKeysAndTheirLampsSendTheirSetting) {
    const struct {
        const char* key;
        const char* lamp;
        Qt::Key code;
        char item;
    } cases[] = {{"cmdHardkey(0)", "picLight(4)", Qt::Key_1, 18},
                 {"cmdHardkey(1)", "picLight(5)", Qt::Key_2, 19},
                 {"cmdHardkey(2)", "picLight(6)", Qt::Key_3, 22},
                 {"cmdHardkey(3)", "picLight(7)", Qt::Key_4, 23}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.key);
        bus.find(1)->set_hv(true);
        const Commands once = {{16, c.item}};
        click(machine, c.key);
        EXPECT_EQ(take_settings(), once);
        click(machine, c.lamp);
        EXPECT_EQ(take_settings(), once);
        key(c.code, Qt::ControlModifier);
        EXPECT_EQ(take_settings(), once);
        // A key that is held down must not switch again and again.
        QTest::simulateEvent(QApplication::focusWidget(), true, c.code, Qt::ControlModifier, {}, true);
        QTest::simulateEvent(child(machine, c.key), true, Qt::Key_Space, Qt::NoModifier, {}, true);
        QTest::simulateEvent(child(machine, c.key), false, Qt::Key_Space, Qt::NoModifier, {}, true);
        EXPECT_EQ(take_settings(), Commands{});
    }
}

// Presses that come over assistive technology in quick order, which are lost or put off; a press without a
// line that is refused without a word.
TEST_F(HeadWindow, AssistivePressesAreOneFrameEach) {
    bus.find(1)->set_hv(true);
    const auto press = [&](const char* control, int times) {
        QAccessibleInterface* key = QAccessible::queryAccessibleInterface(child(machine, control));
        while (times-- > 0) key->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        EXPECT_EQ(take_settings(), Commands{}) << "whoever asks is not kept waiting";
        settle();
    };
    press("cmdHardkey(3)", 3);
    EXPECT_EQ(take_settings(), Commands(3, "\x10\x17"));
    press("picLight(5)", 2);
    EXPECT_EQ(take_settings(), Commands(2, "\x10\x13"));
    press("cmdKey(3)", 2);
    EXPECT_EQ(head.menu_ptr, 3);
    link.close_bus_port();
    press("cmdHardkey(3)", 1);
    EXPECT_EQ(child<QLabel>(form, "StatusLabel")->text(),
              QStringLiteral("JEX Amplifier 1001: RF Off not sent, the port is not open"));
}

// A key under the wrong field of the legend would open another screen than the display promises.
TEST_F(HeadWindow, SoftKeysLampsAndFunctionKeysMoveBetweenScreens) {
    const struct {
        std::function<void()> act;
        int menu;
        int sub_menu;
    } steps[] = {
        {[&] { click(machine, "cmdKey(3)"); }, 2, 0},
        {[&] { click(machine, "picLight(3)"); }, 3, 0},
        {[&] { key(Qt::Key_F4); }, 4, 0},
        {[&] { click(machine, "cmdKey(4)"); }, 1, 0},
        {[&] { key(Qt::Key_F4); }, 2, 0},
        {[&] { key(Qt::Key_F1); }, 0, k_setup_menus},
        {[&] { key(Qt::Key_Escape); }, 2, 0},
        {[&] { key(Qt::Key_F2); }, 0, k_information},
        {[&] { key(Qt::Key_Escape); }, 2, 0},
        {[&] { key(Qt::Key_Escape); }, 1, 0},
    };
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        SCOPED_TRACE(i);
        steps[i].act();
        EXPECT_EQ(head.menu_ptr, steps[i].menu);
        EXPECT_EQ(head.sub_menu, steps[i].sub_menu);
    }
}

// MORE, pressed while the program waits for the reason of a shutdown, acknowledges what nobody has seen; or
// OK never acts.
TEST_F(HeadWindow, AKeyFromBeforeAShutdownIsNoOk) {
    bus.find(1)->shut_down(12, "Helix");
    const auto press_all = [&] {
        for (const char* name : {"cmdKey(3)", "picLight(3)"})
            QTest::mouseClick(child(machine, name), Qt::LeftButton);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F4);
    };
    clock.advance(std::chrono::seconds(1));
    host.step();
    ASSERT_TRUE(head.shutdown_shown);
    press_all();
    QCoreApplication::sendPostedEvents();  // the display is painted …
    press_all();                           // … and then the loop comes to what was pressed before
    EXPECT_EQ(take_settings(), Commands{});
    QTest::qWait(30);
    key(Qt::Key_F4);
    EXPECT_EQ(take_settings(), Commands({{16, 21}}));
}

// Keys typed into the terminal or the traffic view must stay there, and an icon must not switch an unseen
// amplifier.
TEST_F(HeadWindow, KeysReachNoHeadFromElsewhereOrAnIcon) {
    key(Qt::Key_F6);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("Term"));
    key(Qt::Key_F4);
    key(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(head.menu_ptr, 1);
    key(Qt::Key_F6);
    key(Qt::Key_F4);
    EXPECT_EQ(head.menu_ptr, 2);
    pick("mnuModemOpt(3)");
    child(form, "txtTraffic")->setFocus();
    key(Qt::Key_F4);
    key(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(head.menu_ptr, 2);
    machine.setFocus();
    machine.parentWidget()->showMinimized();
    QTest::keyClick(&form, Qt::Key_F4);
    QTest::keyClick(&form, Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(head.menu_ptr, 2);
    EXPECT_EQ(take_settings(), Commands{});
}

// The scroll bar: moves of the operator are sent, a burst of them once, moves of the program never;
// the wheel is dead without the focus.
TEST_F(HeadWindow, ScrollBarSendsTheOperatorsMovesOnly) {
    EXPECT_TRUE(bar.isHidden());
    key(Qt::Key_PageDown);
    EXPECT_EQ(take_settings(), Commands{});

    key(Qt::Key_F1);
    ASSERT_FALSE(bar.isHidden());
    EXPECT_EQ(bar.maximum(), 300);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageDown);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    key(Qt::Key_Right);
    EXPECT_EQ(take_settings(), Commands({{16, 24, 32, 0}}));
    bar.setValue(300);
    settle();
    EXPECT_EQ(take_settings(), Commands({{16, 24, 44, 1}}));

    const auto turn_wheel = [&] {
        QWheelEvent event(QPointF(5, 5), bar.mapToGlobal(QPointF(5, 5)), {}, {0, 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&bar, &event);
        settle();
        return take_settings().size();
    };
    EXPECT_EQ(turn_wheel(), 0U);
    bar.setFocus();
    EXPECT_EQ(turn_wheel(), 1U);

    // Refused: the bar goes back to where the amplifier is, without a second command.
    const int before = bar.value();
    bus.find(1)->faults.refuse_code = 4;
    when_box_opens([](QMessageBox&) {});
    int moves = 0;
    QObject::connect(&machine.panel_view(), &PanelView::scroll_moved, &machine, [&moves] { ++moves; });
    bar.setValue(100);
    settle();
    EXPECT_EQ(take_settings().size(), 1U);
    EXPECT_EQ(moves, 1);
    EXPECT_EQ(bar.value(), before);

    activate();
    // The key that ends the mode hides the bar; the focus must not wander to the terminal.
    key(Qt::Key_F1);
    EXPECT_TRUE(bar.isHidden());
    EXPECT_TRUE(machine.isAncestorOf(QApplication::focusWidget()));
}

// A thumb that is held while a shutdown takes the bar away: held for ever, the bar stays where it was, and
// the next step sets a value that nobody asked for.
TEST_F(HeadWindow, AThumbThatIsHeldLetsGoWithTheBar) {
    key(Qt::Key_F1);
    bar.setSliderDown(true);
    shown.panel.hide_scroll();
    machine.show_view(shown, 0);
    shown.panel.set_scroll({true, 0, 300, 7});
    machine.show_view(shown, 0);
    EXPECT_EQ(bar.value(), 7);
}

// What is pressed while the loop stands still is taken for what is pressed now: an On-key of long ago, or a
// key whose legend has changed since.
TEST(StandStill, WhatTheLoopComesToThenIsOld) {
    auto own = std::make_unique<ManualClock>();
    ManualClock& clock = *own;
    StandStill still(std::move(own));
    const auto passes = [&](int milliseconds) {
        clock.advance(std::chrono::milliseconds(milliseconds));
        return std::chrono::duration_cast<std::chrono::milliseconds>(still.age()).count();
    };
    EXPECT_EQ(passes(900), 0);
    still.beat();
    EXPECT_EQ(passes(900), 0);
    EXPECT_EQ(passes(4100), 5000);  // what comes before the beat
    still.beat();
    EXPECT_EQ(passes(200), 5200);  // … and after it
    EXPECT_EQ(passes(200), 0);
}

// What assistive technology reads, and that a change of the display is announced once.
TEST_F(HeadWindow, AccessibilityTable) {
    shown.panel.set_line(4, "SETUP INFO      MORE");
    shown.panel.set_key_name(0, "SETUP");
    shown.panel.set_key_name(2, "");
    shown.panel.set_lamp(4, LampColour::yellow);
    shown.panel.set_gauge(52.34);
    machine.show_view(shown, 0);
    const struct {
        const char* control;
        QAccessible::Role role;
        const char* name;
        const char* description;
    } cases[] = {
        {"lblDisplayA(3)", QAccessible::StaticText, "SETUP INFO      MORE", "Display line 4"},
        {"cmdKey(0)", QAccessible::Button, "SETUP", "Soft key 1"},
        {"cmdKey(2)", QAccessible::Button, "Key 3", "Soft key 3"},
        {"cmdKey(4)", QAccessible::Button, "EXIT", "Exit key"},
        {"cmdHardkey(0)", QAccessible::Button, "HV On", "Hard key"},
        {"cmdHardkey(1)", QAccessible::Button, "HV Off", "Hard key"},
        {"cmdHardkey(2)", QAccessible::Button, "RF On", "Hard key"},
        {"cmdHardkey(3)", QAccessible::Button, "RF Off", "Hard key"},
        {"picLight(3)", QAccessible::Button, "Lamp 4", "yellow"},
        {"picLight(0)", QAccessible::Button, "Lamp 1", "dark"},
        {"Picture1", QAccessible::ProgressBar, "Power gauge", "52.3 dBm"},
        {"VScroll1", QAccessible::ScrollBar, "Scroll", ""},
        {"Term", QAccessible::EditableText, "Terminal", ""},
        {"StatusLabel", QAccessible::StaticText, "COM1: connection lost, trying again", "Status"},
    };
    port.on_connection_change(false);
    form.take_notices();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.control);
        QAccessibleInterface* seen = QAccessible::queryAccessibleInterface(child(form, c.control));
        EXPECT_EQ(seen->role(), c.role);
        EXPECT_EQ(seen->text(QAccessible::Name).toStdString(), c.name);
        EXPECT_EQ(seen->text(QAccessible::Description).toStdString(), c.description);
    }
    auto* window = QAccessible::queryAccessibleInterface(machine.parentWidget());
    EXPECT_EQ(window->text(QAccessible::Name), QStringLiteral("JEX Amplifier 1001"));
    EXPECT_EQ(
        QAccessible::queryAccessibleInterface(child(form, "Picture1"))->valueInterface()->currentValue(), 52);

    const auto scroll_bars = [&] {
        const auto* panel = QAccessible::queryAccessibleInterface(&machine.panel_view());
        int count = 0;
        for (int i = 0; i < panel->childCount(); ++i) {
            EXPECT_EQ(panel->indexOfChild(panel->child(i)), i);
            count += panel->child(i)->role() == QAccessible::ScrollBar ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(scroll_bars(), 0) << "present only while shown";
    its_head->press_key(0);
    settle();
    EXPECT_EQ(scroll_bars(), 1);
}

// The panel is never scaled: centred where there is room, at 0 where there is not. Its keys lie under
// their five columns of the display.
TEST_F(HeadWindow, PanelKeepsItsSizeAndItsPlan) {
    const PanelView& view = machine.panel_view();
    const QSize size = view.size();
    machine.parentWidget()->resize(1000, 700);
    EXPECT_EQ(view.pos(),
              QPoint((machine.width() - size.width()) / 2, (machine.height() - size.height()) / 2));
    machine.parentWidget()->resize(300, 200);
    EXPECT_EQ(view.pos(), QPoint(0, 0));
    EXPECT_EQ(view.size(), size);

    const QWidget* line = child(machine, "lblDisplayA(3)");
    const int left = line->mapTo(&view, QPoint(0, 0)).x();
    for (int i = 0; i < 4; ++i) {
        const QRect place = child(machine, qPrintable(QStringLiteral("cmdKey(%1)").arg(i)))->geometry();
        EXPECT_GE(place.left(), left + line->width() * i / 4) << i;
        EXPECT_LT(place.right(), left + line->width() * (i + 1) / 4) << i;
    }
    // "Off" below "On", HV left of RF.
    const auto at = [&](const char* key) { return child(machine, key)->pos(); };
    EXPECT_EQ(at("cmdHardkey(0)").x(), at("cmdHardkey(1)").x());
    EXPECT_EQ(at("cmdHardkey(0)").y(), at("cmdHardkey(2)").y());
    EXPECT_LT(at("cmdHardkey(0)").y(), at("cmdHardkey(1)").y());
    EXPECT_LT(at("cmdHardkey(0)").x(), at("cmdHardkey(2)").x());
}

// A value wider than its field that loses its end, or pushes the beginning out.
TEST_F(HeadWindow, ALineWiderThanTheDisplayIsSeenWhole) {
    auto* line = child<QLabel>(machine, "lblDisplayA(0)");
    const auto lit_columns = [&](const std::string& text) {
        shown.panel.set_line(1, text);
        machine.show_view(shown, 0);
        const QImage picture = line->grab().toImage();
        const int ground = line->palette().color(QPalette::Window).green();
        std::vector<bool> lit(text.size());
        for (int x = 0; x < picture.width(); ++x)
            for (int y = 2; y < picture.height() - 2; ++y)
                if (picture.pixelColor(x, y).green() > ground + 120)
                    lit[static_cast<std::size_t>(x) * text.size() /
                        static_cast<std::size_t>(picture.width())] = true;
        return std::count(lit.begin(), lit.end(), true);
    };
    EXPECT_EQ(lit_columns(std::string(20, 'H')), 20);
    EXPECT_EQ(lit_columns("HHHHHHHHHHHHHHHHHHHHHH"), 22);
    EXPECT_EQ(lit_columns("                     H"), 1);
}

// Colours are stored with red in the low byte; taken the other way round, amber turns blue.
TEST_F(HeadWindow, DisplayTakesItsColours) {
    ScreenSettings look;
    look.fore_colour = 0x000080FF;
    look.back_colour = 0x00400000;
    shown.panel.set_look(look);
    shown.panel.set_line(1, std::string(20, '\xB0') + "x");
    machine.show_view(shown, 0);
    auto* line = child<QLabel>(machine, "lblDisplayA(0)");
    EXPECT_EQ(line->palette().color(QPalette::WindowText), QColor(0xFF, 0x80, 0x00));
    EXPECT_EQ(child(machine, "Frame1")->palette().color(QPalette::Window), QColor(0, 0, 0x40));
    EXPECT_EQ(line->text().at(0), QChar(0xB0));
    const QImage picture = line->grab().toImage();
    bool lit = false;
    for (int x = 0; x < picture.width() && !lit; ++x)
        for (int y = 0; y < picture.height() && !lit; ++y) lit = picture.pixelColor(x, y).red() > 0xE0;
    EXPECT_TRUE(lit);
}

}  // namespace
}  // namespace ampdesk
