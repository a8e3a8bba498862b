// The amplifier window: keys, lamps and scroll bar to the bus, and what is seen and heard of it.
#include <QWheelEvent>
#include <thread>

#include "controlhead/ui/power_gauge.h"
#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using Commands = std::vector<std::string>;

struct HeadWindow : Desk {
    HeadWindow() : Desk(nullptr, {}, {.version = {}, .gauge = {20, 50}, .amplifier_files = {}}) {}

    static std::string part(const char* name, int index) {
        return name + ("(" + std::to_string(index) + ")");
    }
    void show() { machine.show_view(shown, 0); }

    frmMachine& machine = open(1);
    const std::shared_ptr<ControlHead> its_head = head_of(machine);
    const Head& head = its_head->state();
    HeadView shown = machine.view();
    PanelScrollBar& bar = machine.panel_view().scroll_bar();
};

// A key wired to the wrong setting switches the wrong thing on the amplifier; one that is held down switches
// again and again. Presses that come over assistive technology in quick order, of which only the last one
// counts; a press without a line that is refused without a word.
TEST_F(HeadWindow, HardKeysAndTheirLampsSendTheirSetting) {
    const auto assist = [&](const char* control) {
        QAccessibleInterface* key = QAccessible::queryAccessibleInterface(child(machine, control));
        key->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    const char items[] = {18, 19, 22, 23};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        bus.find(1)->set_hv(true);
        const std::string button = part("cmdHardkey", i);
        const std::string lamp = part("picLight", i + 4);
        const auto code = static_cast<Qt::Key>(Qt::Key_1 + i);
        click(machine, button.c_str());
        click(machine, lamp.c_str());
        key(code, Qt::ControlModifier);
        QTest::simulateEvent(QApplication::focusWidget(), true, code, Qt::ControlModifier, {}, true);
        for (const std::string& control : {button, button, lamp, lamp}) assist(control.c_str());
        settle();
        EXPECT_EQ(take_settings(), Commands(7, {16, items[i]}));
    }
    link.close_bus_port();
    click(machine, "cmdHardkey(3)");
    EXPECT_EQ(child<QLabel>(form, "StatusLabel")->text(),
              u"JEX Amplifier 1001: RF Off not sent, the port is not open");
}

// A key under the wrong field of the legend would open another screen than the display promises.
TEST_F(HeadWindow, SoftKeysLampsAndFunctionKeysMoveBetweenScreens) {
    const std::tuple<const char*, std::int16_t, std::int16_t> steps[] = {
        {"cmdKey(3)", 2, 0}, {"picLight(3)", 3, 0},    {"F4", 4, 0},  {"cmdKey(4)", 1, 0},
        {"F4", 2, 0},        {"F1", 0, k_setup_menus}, {"Esc", 2, 0}, {"F2", 0, k_information}};
    for (const auto& [press, menu, sub_menu] : steps) {
        if (std::string_view(press).ends_with(')'))
            click(machine, press);
        else
            key(QKeySequence(QLatin1String(press))[0].key());
        EXPECT_EQ(std::pair(head.menu_ptr, head.sub_menu), std::pair(menu, sub_menu)) << press;
    }
}

// MORE, pressed while the program waits for the reason of a shutdown, acknowledges what nobody has seen; or
// OK never acts.
TEST_F(HeadWindow, AKeyFromBeforeAShutdownIsNoOk) {
    bus.find(1)->shut_down(12, "Helix");
    clock.advance(std::chrono::seconds(1));
    host.step();
    ASSERT_TRUE(head.shutdown_shown);
    for (int i = 0; i < 2; ++i) {
        for (const char* name : {"cmdKey(3)", "picLight(3)"})
            QTest::mouseClick(child(machine, name), Qt::LeftButton);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F4);
        QCoreApplication::sendPostedEvents();  // the display is painted; what was pressed before comes then
    }
    step();
    EXPECT_EQ(take_settings(), Commands{});
    EXPECT_TRUE(soon([&] {
        key(Qt::Key_F4);
        return !settings.empty();
    }));
    EXPECT_EQ(take_settings(), Commands({{16, 21}}));
}

// Keys typed into the terminal or the traffic view must stay there, and an icon must not switch an unseen
// amplifier.
TEST_F(HeadWindow, KeysReachNoHeadFromElsewhereOrAnIcon) {
    key(Qt::Key_F6);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), QStringLiteral("Term"));
    key(Qt::Key_F4);
    EXPECT_EQ(head.menu_ptr, 1);
    key(Qt::Key_F6);
    key(Qt::Key_F4);
    EXPECT_EQ(head.menu_ptr, 2);
    pick("mnuModemOpt(3)");
    child(form, "txtTraffic")->setFocus();
    key(Qt::Key_F4);
    machine.setFocus();
    machine.parentWidget()->showMinimized();
    QTest::keyClick(&form, Qt::Key_F4);
    QTest::keyClick(&form, Qt::Key_1, Qt::ControlModifier);
    settle();
    EXPECT_EQ(head.menu_ptr, 2);
    EXPECT_EQ(take_settings(), Commands{});
}

// The scroll bar: moves of the operator are sent, a burst of them once, moves of the program never; the wheel
// is dead without the focus.
TEST_F(HeadWindow, ScrollBarSendsTheOperatorsMovesOnly) {
    key(Qt::Key_PageDown);
    key(Qt::Key_F1);
    ASSERT_FALSE(bar.isHidden());
    EXPECT_EQ(take_settings(), Commands{});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageDown);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    key(Qt::Key_Right);
    bar.setValue(300);
    settle();
    EXPECT_EQ(take_settings(), Commands({{16, 24, 32, 0}, {16, 24, 44, 1}}));

    QWheelEvent wheel(QPointF(5, 5), bar.mapToGlobal(QPointF(5, 5)), {}, {0, 120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&bar, &wheel);
    settle();
    EXPECT_EQ(take_settings(), Commands{});

    // Refused: the bar goes back to where the amplifier is, without a second command.
    const int before = bar.value();
    bus.find(1)->faults.refuse_code = 4;
    when_box_opens();
    bar.setValue(100);
    settle();
    EXPECT_EQ(take_settings().size(), 1U);
    EXPECT_EQ(bar.value(), before);

    activate();
    // The key that ends the mode hides the bar; the focus must not wander to the terminal.
    key(Qt::Key_F1);
    EXPECT_TRUE(bar.isHidden());
    EXPECT_TRUE(machine.isAncestorOf(QApplication::focusWidget()));
}

// A thumb that a reading moves while it is held. One that is held while a shutdown takes the bar away: held
// for ever, the bar stays where it was, and the next step sets a value that nobody asked for.
TEST_F(HeadWindow, AThumbThatIsHeldStaysAndLetsGoWithTheBar) {
    key(Qt::Key_F1);
    const int held = bar.value();
    bar.setSliderDown(true);
    shown.panel.set_scroll({true, 0, 300, held + 9});
    show();
    EXPECT_EQ(bar.value(), held);
    shown.panel.hide_scroll();
    show();
    shown.panel.set_scroll({true, 0, 300, 7});
    show();
    EXPECT_EQ(bar.value(), 7);
}

// What is pressed while the loop stands still is taken for what is pressed now: an On-key of long ago, or a
// key whose legend has changed since.
TEST(StandStill, WhatTheLoopComesToThenIsOld) {
    auto own = std::make_unique<ManualClock>();
    ManualClock& clock = *own;
    StandStill still(std::move(own));
    const auto expect_age = [&](int passed, int age) {
        clock.advance(std::chrono::milliseconds(passed));
        EXPECT_EQ(still.age(), std::chrono::milliseconds(age));
    };
    expect_age(900, 0);
    expect_age(4100, 5000);  // what comes before the beat
    still.beat();
    expect_age(200, 5200);  // … and after it
    expect_age(200, 0);
}

TEST_F(HeadWindow, AnOnKeyOfAHeldUpWindowIsOld) {
    std::this_thread::sleep_for(StandStill::k_shortest + std::chrono::milliseconds(100));
    QTest::mouseClick(child(machine, "cmdHardkey(0)"), Qt::LeftButton);
    clock.advance(std::chrono::milliseconds(1000));
    settle();
    EXPECT_EQ(take_settings(), Commands{});
}

// What assistive technology reads; a scroll bar that it finds where none is shown.
TEST_F(HeadWindow, WhatIsSpoken) {
    shown.panel.set_line(4, "SETUP INFO      MORE");
    shown.panel.set_key_name(0, "SETUP");
    shown.panel.set_key_name(2, "");
    shown.panel.set_lamp(4, LampColour::yellow);
    shown.panel.set_gauge(42.34);
    show();
    port.on_connection_change(false);
    form.take_notices();
    const auto heard = [](QWidget* widget) { return QAccessible::queryAccessibleInterface(widget); };
    const std::pair<const char*, const char*> cases[] = {
        {"lblDisplayA(3)", "SETUP INFO      MORE|Display line 4"},
        {"cmdKey(0)", "SETUP|Soft key 1"},
        {"cmdKey(2)", "Key 3|Soft key 3"},
        {"cmdKey(4)", "EXIT|Exit key"},
        {"cmdHardkey(0)", "HV On|Hard key"},
        {"cmdHardkey(1)", "HV Off|Hard key"},
        {"cmdHardkey(2)", "RF On|Hard key"},
        {"cmdHardkey(3)", "RF Off|Hard key"},
        {"picLight(3)", "Lamp 4|yellow"},
        {"picLight(0)", "Lamp 1|dark"},
        {"Picture1", "Power gauge|42.3 dBm"},
        {"VScroll1", "Scroll|"},
        {"StatusLabel", "COM1: connection lost, trying again|Status"},
    };
    for (const auto& [control, spoken] : cases) {
        const auto* part = heard(child(form, control));
        const QString text = part->text(QAccessible::Name) + u'|' + part->text(QAccessible::Description);
        EXPECT_EQ(text.toStdString(), spoken) << control;
    }
    EXPECT_EQ(heard(machine.parentWidget())->text(QAccessible::Name), QStringLiteral("JEX Amplifier 1001"));

    const auto* panel = heard(&machine.panel_view());
    const int without_bar = panel->childCount();
    its_head->press_key(0);
    settle();
    ASSERT_EQ(panel->childCount(), without_bar + 1);
    EXPECT_EQ(panel->child(without_bar)->role(), QAccessible::ScrollBar);
}

// A key that stands where another one is looked for: soft keys under their five columns of the display, "Off"
// below "On", HV left of RF.
TEST_F(HeadWindow, KeysHaveTheirPlaces) {
    const auto place = [this](const char* name, int i) {
        return child(machine, part(name, i).c_str())->geometry();
    };
    const QRect display = child(machine, "Frame1")->geometry();
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ((place("cmdKey", i).center().x() - display.x()) * 4 / display.width(), i);
    const auto at = [&](int i) { return place("cmdHardkey", i).topLeft(); };
    EXPECT_EQ(QPoint(at(0).x(), at(3).y()), at(1));
    EXPECT_EQ(QPoint(at(3).x(), at(0).y()), at(2));
    EXPECT_TRUE(at(0).x() < at(3).x() && at(0).y() < at(3).y());
}

// A lamp in another colour than it is said to have, or a bar that does not end above the power on its scale;
// figures of another scale.
TEST_F(HeadWindow, LampsAndGaugeShineAsTheyShould) {
    const std::pair<LampColour, int> hues[] = {// in degrees; grey has none
                                               {LampColour::red, 0},
                                               {LampColour::yellow, 60},
                                               {LampColour::green, 120},
                                               {LampColour::dark, -1}};
    for (const auto& [colour, hue] : hues)
        for (const int lamp : {1, 8}) {
            shown.panel.set_lamp(lamp, colour);
            show();
            const QImage lens = child(machine, part("picLight", lamp - 1).c_str())->grab().toImage();
            EXPECT_EQ(lens.pixelColor(lens.rect().center() + QPoint(2, 2)).hsvHue(), hue) << lamp;
        }
    auto* gauge = child(machine, "Picture1");
    const std::pair<double, double> powers[] = {{10, 0}, {20, 0}, {35, 0.5}, {42.5, 0.75}, {50, 1}, {60, 1}};
    for (const auto& [dbm, share] : powers) {
        shown.panel.set_gauge(dbm);
        show();
        const QImage strip = gauge->grab(QRect(12, 8, gauge->width() - 24, 1)).toImage();
        int end = 0;
        for (int x = 0; x < strip.width(); ++x)
            if (strip.pixelColor(x, 0).green() > 200)
                end = x;
        EXPECT_NEAR(end, share * strip.width(), 5) << dbm;
    }
    const auto figure = [gauge](GaugeRange range, bool right) {
        PowerGauge scale(range, nullptr);
        scale.resize(gauge->size());
        return scale.grab(QRect(right ? scale.width() - 28 : 0, scale.height() - 20, 28, 20)).toImage();
    };
    EXPECT_EQ(figure({20, 50}, false), figure({20, 80}, false));
    EXPECT_EQ(figure({20, 50}, true), figure({-10, 50}, true));
    EXPECT_NE(figure({20, 50}, true), figure({20, 80}, true));
}

// A value wider than its field that loses its end, or pushes the beginning out; colours, which are stored
// with red in the low byte, taken the other way round, so that amber turns blue.
TEST_F(HeadWindow, ALineIsSeenWholeAndInItsColours) {
    shown.panel.set_look({.fore_colour = 0x000080FF, .back_colour = 0x00400000});
    auto* line = child<QLabel>(machine, "lblDisplayA(0)");
    const auto lit_columns = [&](const std::string& text) {
        shown.panel.set_line(1, text);
        show();
        const QImage picture = line->grab().toImage();
        std::vector<bool> lit(text.size());
        for (int x = 0; x < picture.width(); ++x)
            for (int y = 2; y < picture.height() - 2; ++y)
                if (picture.pixelColor(x, y).red() > 0xE0)
                    lit[static_cast<std::size_t>(x) * text.size() /
                        static_cast<std::size_t>(picture.width())] = true;
        return std::count(lit.begin(), lit.end(), true);
    };
    EXPECT_EQ(lit_columns("HHHHHHHHHHHHHHHHHHHHHH"), 22);
    EXPECT_EQ(lit_columns("                   \xB0 H"), 2);
    EXPECT_EQ(line->text().at(19), QChar(0xB0));
    EXPECT_EQ(child(machine, "Frame1")->palette().color(QPalette::Window), QColor(0, 0, 0x40));
}

}  // namespace
}  // namespace ampdesk
