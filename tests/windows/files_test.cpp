// Files that cannot be written or read: what the operator is told, and that the old ones stay.
#include <unistd.h>

#include <set>

#include "shell/site_configuration.h"
#include "tests/support/full_disk.h"
#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

class Files : public Desk {
  protected:
    Files() {
        std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
        person.keeps = true;
    }

    // Chooses the menu's item and presses the button in the dialog that it opens.
    void press(const char* item, const char* dialog, const char* button) {
        when_dialog_opens(dialog, [this, button](QDialog& opened) { click(opened, button); });
        pick(item);
    }

    // What the operator is told, and that no file changes.
    void expect_told(const char* what, const Texts& expected, const std::function<void()>& act) {
        SCOPED_TRACE(what);
        const auto contents = [this] {
            std::set<std::string> all;
            for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
                all.insert(entry.path().filename().string() + ": " + file_bytes(entry.path()));
            return all;
        };
        kept_boxes.clear();
        const auto before = contents();
        act();
        EXPECT_EQ(kept_boxes, expected);
        EXPECT_EQ(contents(), before);
    }

    const std::string rs485 = "RS-485\r\nCOM1:\r\n6\r\n1\r\n";
};

// A file that is lost or cut short by a disk without room, a failure that is not told, told box upon box
// or without the file's name, or that stops the program.
TEST_F(Files, OnAFullDiskTheOldOnesStay) {
    open(1);
    open(2);
    for (const char* name : {"com1001.dat", "com1002.dat", "rs485.dat"}) folder.put(name, rs485);
    for (const char* name : {"set1001.dat", "set1002.dat", "rs422.dat"}) folder.put(name, "an old one");
    folder.put("layout.dat", "");
    const auto try_to = [this](const char* what, const Texts& expected, const std::function<void()>& save) {
        expect_told(what, expected, [&] {
            const FullDisk full;
            save();
            settle();
        });
    };
    try_to("Save All", {"Disk full|com1001.dat, set1001.dat, com1002.dat, set1002.dat"},
           [&] { pick("mnuMachineItem(6)"); });
    try_to("Save As", {"Disk full|" + (folder / "new.dat")}, [&] {
        when_asked_for_a_file(folder / "new.dat");
        pick("mnuMachineItem(5)");
    });
    try_to("Setup_422", {"Disk full|rs422.dat", "Disk full|rs485.dat"},
           [&] { press("mnuToolsItem(2)", "frmSerial", "cmdOk"); });
    try_to("the traffic view", {"Disk full|" + (folder / "traffic.txt")}, [&] {
        pick("mnuModemOpt(3)");
        when_asked_for_a_file(folder / "traffic.txt");
        click(form, "cmdSave");
    });
    try_to("Close", {"Disk full|set1002.dat"}, [&] { pick("mnuMachineItem(2)"); });
    try_to("a new amplifier", {"Disk full|com1003.dat"}, [&] { station.add_amplifier(3, "1003", "KU"); });
    try_to("the end", {"Disk full|layout.dat, set1001.dat"}, [&] { form.close(); });
    EXPECT_FALSE(form.isVisible());
}

// A file without the right to read it that ends the program, is taken for a damaged one and put aside or
// replaced, or passed over without a word.
TEST_F(Files, ThatCannotBeReadAreToldByNameAndStay) {
    bus.add({.address = 1, .serial = 1001, .noise = 0});
    folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n7\r\n1\r\n");
    const auto try_to_read = [this](const char* name, const Texts& expected,
                                    const std::function<void()>& read) {
        std::filesystem::permissions(folder.put(name, rs485), std::filesystem::perms::none);
        expect_told(name, expected, [&] {
            const uid_t user = geteuid();
            ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);  // no mode stops the superuser
            read();
            settle();
            ASSERT_EQ(seteuid(user), 0);
        });
        std::filesystem::remove(folder / name);
    };
    const auto open_amplifier = [&] {
        station.open_amplifier_file("com1001.dat");
        let_start();
        EXPECT_EQ(station.open_count(), 0);
        EXPECT_EQ(link.settings()->baud, 9600);  // given back
    };
    try_to_read("set1001.dat",
                {"The settings for this HPA already exist, do you want to restore ? ",
                 "File set1001.dat or band_set.dat corrupted.|JEX Amplifier 1001: Permission denied"},
                open_amplifier);
    try_to_read("com1001.dat", {"Default settings for serial port corrupted|Permission denied"},
                open_amplifier);
    try_to_read("rs485.dat", Texts(2, "Permission denied|rs485.dat"),
                [&] { press("mnuToolsItem(2)", "frmSerial", "cmdCancel"); });
    try_to_read("ampdesk.dat", {"Permission denied|ampdesk.dat"}, [&] { form.load(); });
    try_to_read("ampdesk.ini", {"ampdesk.ini: Permission denied"},
                [&] { kept_boxes = read_site_configuration("ampdesk.ini").warnings; });
    try_to_read("layout.dat", {"Permission denied|layout.dat"}, [&] {
        EXPECT_FALSE(read_window_layout("layout.dat"));
        form.close();
    });
}

}  // namespace
}  // namespace ampdesk
