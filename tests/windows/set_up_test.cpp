// The setup dialogs behind their menu items, with simulated amplifiers on the bus.
#include <QComboBox>

#include "platform/text_file.h"
#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

class SetUpMenu : public Desk {
  protected:
    SetUpMenu() : Desk(nullptr, ports()) {}

    // There is nothing behind COM2.
    static BusOptions ports() {
        BusOptions options;
        options.ports.set(2, {});
        return options;
    }
    // OK and Cancel, on a line that leads to nobody.
    void try_in_vain(const char* menu, const char* dialog_named, const char* port_name) {
        const auto before = link.settings();
        when_dialog_opens(dialog_named, [&](QDialog& dialog) {
            enter(dialog, "cboPort", port_name);
            when_box_opens();
            click(dialog, "cmdOk");
            EXPECT_TRUE(comes([&] { return !box_watch.isActive() && child(dialog, "cmdOk")->isEnabled(); }));
            EXPECT_NE(link.settings(), before);
            dialog.reject();
        });
        pick(menu);
    }
    static void enter(const QDialog& dialog, const char* list, const char* text) {
        child<QComboBox>(dialog, list)->setEditText(QLatin1String(text));
    }
};

// A second question, or a dialog that closes, while the amplifier is asked; a notice that nobody sees; a
// failure that leaves no second try; another amplifier's head.
TEST_F(SetUpMenu, NewFindsAnAmplifierAndOpensItsHead) {
    bus.add({.address = 5, .serial = 4711, .name = "KU/K", .noise = 0});
    bus.find(5)->line.silent = true;
    int exchanges = 0;
    when_dialog_opens("frmSetup", [&](QDialog& dialog) {
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&dialog));
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
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_FALSE(file_exists("rs485.dat"));

        bus.find(5)->line.silent = false;
        QTest::mouseClick(ok, Qt::LeftButton);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        EXPECT_TRUE(comes([&] { return !dialog.isVisible(); }));
        EXPECT_EQ(exchanges, 4);
        link.on_traffic = nullptr;
    });
    pick("mnuMachineItem(0)");
    ASSERT_EQ(station.open_count(), 1);
    const HeadIdentity& found = form.active_machine()->identity();
    EXPECT_EQ(found.unit_address, 5);
    EXPECT_EQ(found.number + found.model, "4711KU/K");
    EXPECT_EQ(read_text_lines("rs485.dat"), (std::vector<std::string>{"RS-485", "COM3:", "6", "5"}));
    EXPECT_EQ(read_text_lines("com4711.dat"), read_text_lines("rs485.dat"));
    EXPECT_EQ(link.settings()->port_name, "COM3:");

    // The same once more: the line stays as it is for the head that uses it, and the address is taken.
    when_dialog_opens("frmSetup", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM1:");
        when_box_opens();
        click(dialog, "cmdOk");
        EXPECT_TRUE(comes([&] { return !box_watch.isActive(); }));
        dialog.reject();
    });
    pick("mnuMachineItem(0)");
    EXPECT_EQ(told, "This Address Is Used, Please Pick Up Another One.");
    EXPECT_EQ(link.settings()->port_name, "COM3:");
    EXPECT_EQ(station.open_count(), 1);
}

TEST_F(SetUpMenu, Setup422OpensTheLineAnewAndKeepsItsSettings) {
    when_dialog_opens("frmSerial", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM4:");
        when_box_opens();
        click(dialog, "cmdOk");
    });
    pick("mnuToolsItem(2)");
    EXPECT_TRUE(comes([&] { return !told.empty(); }));
    EXPECT_EQ(told, "Com Settings Are Probably Not Right, Select Settings Again When Not Communicating");
    EXPECT_EQ(link.settings()->port_name, "COM4:");
    EXPECT_EQ(read_text_lines("rs422.dat"),
              (std::vector<std::string>{"RS-422", "COM4:", "6", "3", "0", "0"}));
}

// Catches heads left dead by a port that could not be opened and a Cancel, a line left open that was only
// tried, and a remote station's line that is lost to a panel that did not open.
TEST_F(SetUpMenu, GivenUpTheLineIsGivenBack) {
    for (const bool new_amplifier : {true, false}) {
        new_amplifier ? try_in_vain("mnuMachineItem(0)", "frmSetup", "COM2:")
                      : try_in_vain("mnuToolsItem(2)", "frmSerial", "COM2:");
        EXPECT_EQ(told, "Com Settings Are Not Valid, Select Settings Again.");
        EXPECT_EQ(link.settings(), (LineSettings{"COM1:", 9600, 0, 8, 1}));
    }
    link.close_bus_port();
    try_in_vain("mnuMachineItem(0)", "frmSetup", "COM4:");
    EXPECT_EQ(told, "Read Status Failed, Check the Settings");
    EXPECT_FALSE(link.bus_link_on());

    // An amplifier was found, but its panel closes again.
    link.open_bus_port("COM3:", 1200, 0, 8, 1);
    bus.add({.address = 5, .serial = 4711});
    folder.put("set4711.dat", "junk");
    person.on_ask = [&](const Message& box) {
        told = box.text;
        return box.buttons == Buttons::yes_no ? Answer::yes : Answer::ok;
    };
    when_dialog_opens("frmSetup", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM1:");
        enter(dialog, "cboAddress", "5");
        click(dialog, "cmdOk");
    });
    pick("mnuMachineItem(0)");
    EXPECT_TRUE(comes([&] { return told.starts_with("File set4711.dat or"); }));
    person.on_ask = nullptr;
    EXPECT_EQ(told, "File set4711.dat or band_set.dat corrupted.");
    EXPECT_EQ(link.settings(), (LineSettings{"COM3:", 1200, 0, 8, 1}));
}

// An amplifier that does not tell its model, and whose band nobody asks for.
TEST_F(SetUpMenu, TheOperatorIsAskedForTheBand) {
    when_dialog_opens("frmBand", [&](QDialog& dialog) {
        enter(dialog, "cboBand", "KU/DBS");
        click(dialog, "cmdOk(1)");
    });
    std::string band;
    station.questions().ask({.kind = Question::Kind::band}, [&](const Reply& reply) { band = reply.text; });
    EXPECT_TRUE(comes([&] { return band == "KU/DBS"; }));
}

}  // namespace
}  // namespace ampdesk
