// The setup dialogs behind their menu items, with simulated amplifiers on the bus.
#include <QComboBox>

#include "platform/text_file.h"
#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

class SetUpMenu : public Desk {
  protected:
    static void enter(const QDialog& dialog, const char* list, const char* text) {
        child<QComboBox>(dialog, list)->setEditText(QLatin1String(text));
    }
};

TEST_F(SetUpMenu, NewFindsAnAmplifierAndOpensItsHead) {
    bus.add({.address = 5, .serial = 4711, .name = "KU/K", .noise = 0});
    when_dialog_opens("frmSetup", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM3:");
        enter(dialog, "cboAddress", "5");
        click(dialog, "cmdOk");
    });
    form.mnuMachineItem_Click(0);
    ASSERT_EQ(station.open_count(), 1);
    const HeadIdentity& found = form.active_machine()->head()->identity();
    EXPECT_EQ(found.unit_address, 5);
    EXPECT_EQ(found.number + found.model, "4711KU/K");
    EXPECT_EQ(read_text_lines("com4711.dat"), (std::vector<std::string>{"RS-485", "COM3:", "6", "5"}));
    EXPECT_EQ(link.settings().port_name, "COM3:");

    // The same once more: the line stays as it is for the head that uses it, and the address is taken.
    when_dialog_opens("frmSetup", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM1:");
        when_box_opens();
        click(dialog, "cmdOk");
        dialog.reject();
    });
    form.mnuMachineItem_Click(0);
    EXPECT_EQ(told, "This Address Is Used, Please Pick Up Another One.");
    EXPECT_EQ(link.settings().port_name, "COM3:");
    EXPECT_EQ(station.open_count(), 1);
}

TEST_F(SetUpMenu, Setup422OpensTheLineAnewAndKeepsItsSettings) {
    when_dialog_opens("frmSerial", [&](QDialog& dialog) {
        enter(dialog, "cboPort", "COM4:");
        when_box_opens();
        click(dialog, "cmdOk");
    });
    form.mnuToolsItem_Click(2);
    EXPECT_EQ(told, "Com Settings Are Probably Not Right, Select Settings Again When Not Communicating");
    EXPECT_EQ(link.settings().port_name, "COM4:");
    EXPECT_EQ(read_text_lines("rs422.dat"),
              (std::vector<std::string>{"RS-422", "COM4:", "6", "3", "0", "0"}));
}

// Catches heads left dead by a port that could not be opened and a Cancel.
TEST_F(SetUpMenu, GivenUpTheLineIsGivenBack) {
    for (const bool new_amplifier : {true, false}) {
        when_dialog_opens(new_amplifier ? "frmSetup" : "frmSerial", [&](QDialog& dialog) {
            link.open_bus_port("COM9:", 1200, 0, 8, 1);  // there is none
            dialog.reject();
        });
        new_amplifier ? form.mnuMachineItem_Click(0) : form.mnuToolsItem_Click(2);
        EXPECT_TRUE(link.bus_link_on());
        EXPECT_EQ(link.settings(), (LineSettings{"COM1:", 9600, 0, 8, 1}));
    }
}

TEST_F(SetUpMenu, TheStationAsksForABand) {
    when_dialog_opens("frmBand", [&](QDialog& dialog) {
        enter(dialog, "cboBand", "KU/DBS");
        click(dialog, "cmdOk(1)");
    });
    EXPECT_EQ(station.ask_band(), "KU/DBS");
}

}  // namespace
}  // namespace ampdesk
