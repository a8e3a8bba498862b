// The setup dialogs and the band dialog behind their menu items, by keyboard and mouse, with simulated
// amplifiers on the bus.

#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

class SetUpMenu : public Desk {
  protected:
    SetUpMenu()
        : Desk(nullptr, {.crc = {}, .ports = ports()},
               {.version = {},
                .gauge = {},
                .ports = ports(),
                .amplifier_files = {},
                .models = {"Ma", "Mb", "Mc", "Md", "Me", "Mf", "Mg", "Mh", "Mi"}}) {}

    static PortMap ports() {
        PortMap map;
        map.set(2, {});  // there is nothing behind it
        map.set(3, "/dev/ttyUSB7");
        return map;
    }
    static void enter(const QDialog& dialog, const char* list, const char* text) {
        child<QComboBox>(dialog, list)->setEditText(QLatin1String(text));
    }
};

// A text that is sent as something else than was typed or read, that is told twice or to somebody who gives
// up; a device that is not the port's; a Cancel that sends something or keeps what the rules refuse.
TEST_F(SetUpMenu, FieldsAreHeldToTheirRulesAndKept) {
    person.keeps = true;
    folder.put("rs485.dat", "RS-485\r\nCOM7:\r\n4\r\n12\r\n");
    when_dialog_opens("frmSerial", [&](QDialog& dialog) {
        EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
        settle();
        expect_spoken(dialog, QStringLiteral("Serial RS422 Setup"));
        const auto expect = [&](const char* list, const char* text, const Texts& boxes) {
            EXPECT_EQ(std::exchange(kept_boxes, {}), boxes);
            EXPECT_EQ(child<QComboBox>(dialog, list)->currentText(), QLatin1String(text));
            EXPECT_TRUE(dialog.isVisible());
        };
        expect("cboAddress", "12", {"Invalid Com Port"});
        type(dialog, "cboAddress", "100", Qt::Key_Return);
        expect("cboAddress", "1", {"Invalid Unit Address"});
        type(dialog, "cboAddress", "33", Qt::Key_Tab);
        expect("cboAddress", "33", {});
        type(dialog, "cboPort", "COM3:", Qt::Key_Tab);
        EXPECT_EQ(child<QLabel>(dialog, "lblDevice")->text(), u"/dev/ttyUSB7");
        type(dialog, "cboPort", "com1:", Qt::Key_Tab);
        expect("cboPort", "COM2:", {"Invalid Com Port"});
        EXPECT_EQ(child<QLabel>(dialog, "lblDevice")->text(), u"");
        click(dialog, "optBaud(7)");
        child(dialog, "cboPort")->setFocus();
        enter(dialog, "cboPort", "COM");
        QTest::mousePress(child(dialog, "cmdCancel"), Qt::LeftButton);
        settle();
        QTest::mouseRelease(child(dialog, "cmdCancel"), Qt::LeftButton);
        EXPECT_FALSE(dialog.isVisible());
    });
    pick("mnuToolsItem(2)");
    EXPECT_EQ(kept_boxes, Texts{});
    EXPECT_EQ(file_bytes("rs485.dat"), "RS-485\r\nCOM2:\r\n7\r\n33\r\n");
    EXPECT_EQ(link.settings()->port_name, "COM1:");
}

// A second question, or a dialog that closes, while the amplifier is asked; a notice that nobody sees; a
// failure that leaves no second try; another amplifier's head.
TEST_F(SetUpMenu, NewFindsAnAmplifierAndOpensItsHead) {
    bus.add({.address = 5, .serial = 4711, .name = "KU/K", .noise = 0});
    bus.find(5)->line.silent = true;
    int exchanges = 0;
    when_dialog_opens("frmSetup", [&](QDialog& dialog) {
        QApplication::processEvents();
        expect_spoken(dialog, QStringLiteral("Setup Amplifier Communication"));
        enter(dialog, "cboPort", "COM3:");
        enter(dialog, "cboAddress", "5");
        auto* ok = child(dialog, "cmdOk");
        auto* wait = child(dialog, "lblWait");
        EXPECT_FALSE(wait->isVisible());
        link.on_traffic = [&, ok](const BusTraffic& traffic) {
            exchanges += traffic.sent ? 1 : 0;
            QTest::mouseClick(ok, Qt::LeftButton);
            for (const Qt::Key code : {Qt::Key_Return, Qt::Key_Escape}) QTest::keyClick(&dialog, code);
            dialog.close();
            EXPECT_TRUE(dialog.isVisible());
        };
        when_box_opens();
        QTest::keyClick(&dialog, Qt::Key_Return);
        EXPECT_TRUE(wait->isVisible());
        EXPECT_TRUE(comes([&] { return !told.empty() && !box_watch.isActive(); }));
        EXPECT_EQ(told, "Read Status Failed, Check the Settings");
        EXPECT_EQ(exchanges, 1);
        bus.find(5)->line.silent = false;
        QTest::mouseClick(ok, Qt::LeftButton);
        EXPECT_TRUE(comes([&] { return !dialog.isVisible(); }));
        EXPECT_EQ(exchanges, 4);
        link.on_traffic = nullptr;
    });
    pick("mnuMachineItem(0)");
    const HeadIdentity& found = form.active_machine()->identity();
    EXPECT_EQ(found.unit_address, 5);
    EXPECT_EQ(found.number + found.model, "4711KU/K");
    EXPECT_EQ(file_bytes("com4711.dat"), "RS-485\r\nCOM3:\r\n6\r\n5\r\n");
}

// An option taken for its neighbour or for another group's.
TEST_F(SetUpMenu, Setup422OpensTheLineAnew) {
    when_dialog_opens("frmSerial", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM4:");
        for (const char* option : {"optBaud(4)", "optBits(2)", "optStop(1)", "optParity(2)"})
            child<QAbstractButton>(dialog, option)->click();
        when_box_opens();
        click(dialog, "cmdOk");
    });
    pick("mnuToolsItem(2)");
    EXPECT_TRUE(comes([&] { return !box_watch.isActive(); }));
    EXPECT_EQ(told, "Com Settings Are Probably Not Right, Select Settings Again When Not Communicating");
    EXPECT_EQ(link.settings(), (LineSettings{"COM4:", 2400, 2, 7, 2}));
}

// An amplifier that does not tell its model, and whose band nobody asks for; a name taken as another, or in
// spite of a Cancel.
TEST_F(SetUpMenu, TheOperatorIsAskedForTheBand) {
    const auto answer = [&](const std::function<void(QDialog&)>& act) {
        when_dialog_opens("frmBand", [&](QDialog& dialog) {
            expect_spoken(dialog, QStringLiteral("Select or input the band name"));
            act(dialog);
        });
        std::optional<std::string> band;
        station.questions().ask({.kind = Question::Kind::band},
                                [&](const Reply& reply) { band = reply.text; });
        EXPECT_TRUE(comes([&] { return band.has_value(); }));
        return band.value_or("nothing");
    };
    EXPECT_EQ(answer([&](QDialog& dialog) {
                  const auto* list = child<QComboBox>(dialog, "cboBand");
                  QString items;
                  for (int i = 0; i < list->count(); ++i) items += list->itemText(i) + u' ';
                  EXPECT_EQ(items, u"C/KU/X C/KU KU/K KU/DBS Ma Mb Mc Md Me Mf Mg Mh KU ");
                  click(dialog, "cmdOk(1)");
              }),
              "C/KU/X");
    // Typed in small letters it stays so, although the list has the same in capitals.
    EXPECT_EQ(answer([&](QDialog& dialog) { type(dialog, "cboBand", "ku", Qt::Key_Return); }), "ku");
    EXPECT_EQ(answer([&](QDialog& dialog) { click(dialog, "cmdOk(0)"); }), "");
}

}  // namespace
}  // namespace ampdesk
