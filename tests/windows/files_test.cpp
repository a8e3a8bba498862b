// Every file that the program writes, on a full disk, and every one that it reads, damaged in every way:
// what the operator is told, and what becomes of the file.
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <set>

#include "buslink/bus_setup.h"
#include "buslink/remote_command.h"
#include "controlhead/help_file.h"
#include "platform/text_file.h"
#include "shell/site_configuration.h"
#include "shell/ui/layout_keeper.h"
#include "tests/support/full_disk.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"
#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

// The terminal's line, there before the window.
struct Modem {
    ManualClock line_clock;
    ScriptedPort MSComm1{line_clock};
};

class Files : protected Modem, public Desk {
  protected:
    Files() : Desk(&MSComm1) {
        std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
        person.on_ask = [this](const Message& message) {
            if (message.buttons != Buttons::ok)
                return Answer::yes;
            told.push_back(message.text + "|" + message.detail);
            return Answer::ok;
        };
    }
    ~Files() override { person.on_ask = nullptr; }

    // Names and contents of the folder.
    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            all[entry.path().filename()] = file_bytes(entry.path());
        return all;
    }
    // Chooses the menu's item and presses the button in the dialog that it opens.
    void menu(const char* item, const char* dialog = nullptr, const char* button = nullptr) {
        if (dialog != nullptr)
            when_dialog_opens(dialog, [this, button](QDialog& opened) { click(opened, button); });
        pick(item);
    }

    Texts told;
};

// A file that is lost or cut short by a disk without room, a failure that is not told, told box upon box
// or without the file's name, or that stops the program.
TEST_F(Files, OnAFullDiskTheOldOnesStay) {
    const std::string rs485 = "RS-485\r\nCOM1:\r\n6\r\n1\r\n";
    open(1);
    open(2);
    for (const char* name : {"com1001.dat", "com1002.dat", "rs485.dat"}) folder.put(name, rs485);
    for (const char* name : {"set1001.dat", "set1002.dat"})
        folder.put(name, "Color Settings\r\n 1\r\n 2\r\n 14\r\n 3\r\n");
    for (const char* name : {"copy.dat", "rs422.dat", "my.log", "nv.txt", "traffic.txt", "received.txt"})
        folder.put(name, "an old one");
    folder.put("ampdesk.dat", "ampdesk settings\r\n2\r\n");
    folder.put("layout.dat", "");
    form.load();
    settle();
    const ControlHead& head = *station.open_heads().front();
    const struct {
        const char* what;
        const char* choice;  // in the file dialog
        std::function<void()> action;
        Texts told;
    } table[] = {
        {"Save", "", [&] { station.save(head); }, {"Disk full|com1001.dat, set1001.dat"}},
        {"Save All",
         "",
         [&] { menu("mnuMachineItem(6)"); },
         {"Disk full|com1001.dat, set1001.dat, com1002.dat, set1002.dat"}},
        {"Save As", "copy.dat", [&] { station.save_as(1, "copy.dat"); }, {"Disk full|copy.dat"}},
        {"New", "", [&] { menu("mnuMachineItem(0)", "frmSetup", "cmdCancel"); }, {"Disk full|rs485.dat"}},
        {"a new amplifier at another address",
         "",
         [&] {
             bus.add({.address = 3, .serial = 1002});
             station.add_amplifier(3, "1002", "KU");
             EXPECT_TRUE(comes([&] { return station.open_count() == 3; }));
             let_start();
             station.close_window(3);
         },
         {"Disk full|com1002.dat", "Disk full|set1002.dat"}},
        {"Setup_422",
         "",
         [&] { menu("mnuToolsItem(2)", "frmSerial", "cmdOk"); },
         {"Disk full|rs422.dat", "Disk full|rs485.dat"}},
        {"Modem > Settings",
         "",
         [&] { menu("mnuModemItem(2)", "ConfigScrn", "cmdOk"); },
         {"Disk full|ampdesk.dat"}},
        {"the log",
         "my.log",
         [&] { menu("mnuModemOpt(1)"); },
         {"The log could not be opened|my.log: Disk full"}},
        {"the traffic view",
         "traffic.txt",
         [&] {
             menu("mnuModemOpt(3)");
             click(form, "cmdSave");
         },
         {"Disk full|traffic.txt"}},
        {"a received text",
         "received.txt",
         [&] {
             menu("mnuModemItem(6)");
             auto* dialog = child<QDialog>(form, "frmTransfer");
             child<QAbstractButton>(*dialog, "optKind(1)")->click();
             click(*dialog, "cmdStart");
             MSComm1.arrive("news");
             settle();
             click(*dialog, "cmdEnd");
             EXPECT_TRUE(comes([&] { return !told.empty(); }));
         },
         {"Disk full|received.txt"}},
        {"Read nvRam", "nv.txt", [&] { menu("mnuToolsSram(0)"); }, {"Disk full|nv.txt"}},
        {"Close", "", [&] { menu("mnuMachineItem(2)"); }, {"Disk full|set1002.dat"}},
        {"the end", "", [&] { form.close(); }, {"Disk full|layout.dat, set1001.dat"}},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.what);
        told.clear();
        person.choice = row.choice;
        const auto before = contents();
        {
            const FullDisk full;
            row.action();
            settle();
        }
        EXPECT_EQ(told, row.told);
        EXPECT_EQ(contents(), before);
    }
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(station.open_count(), 0);
}

// What reading a file came to: all of it was taken, or none. Anything between is a value of its own.
const std::string k_whole = "whole";
const std::string k_none = "none";

// One file, its content when it is sound, and how it is read. `read` tells what came of it.
struct ReadFile {
    const char* name;
    std::string sound;
    std::function<std::string()> read;
    std::set<std::string> between{};  // "DAMAGE WHAT": what else than none a damaged one may come to
    std::set<std::string> silent{};   // the damages that are passed over without a word
    bool named = true;                // what is told names the file
};

class DamagedFiles : public Files {
  protected:
    static std::string was(bool whole) { return whole ? k_whole : k_none; }

    std::string open_amplifier() {
        station.auto_open_dat_files({"com1001.dat"});
        let_start();
        if (station.open_count() == 0)
            return k_none;
        const ScreenSettings look = station.open_heads().front()->panel().look();
        station.close_all();
        const ScreenSettings own{.fore_colour = 1, .back_colour = 2, .font_size = 14, .machine_colour = 3};
        return look == own ? k_whole : look == ScreenSettings{} ? "opened" : "another look";
    }
    std::string read_fields() {
        RecordingOperator clerk;
        const BusChoices fields = load_bus_choices("rs485.dat", clerk);
        for (const Message& m : clerk.messages) person.ask(m);
        return fields == BusChoices{.port = "COM3:", .address = "12", .baud = 7} ? k_whole
               : fields == BusChoices{}                                          ? k_none
                                                                                 : fields.port;
    }
    std::string open_remotely() {
        RemoteCommands remote(
            link, [this](std::string_view text) { told.emplace_back(text); }, ".");
        remote.port_command_marker = "\x02\x02";
        link.close_bus_port();
        remote.commCommandProc("\x02\x02RS422");
        carry_out(link, remote);
        const bool opened = link.bus_link_on();
        const bool right = link.settings() == LineSettings{"COM4:", 1200, 2, 7, 2};
        link.open_bus_port("COM1:", 9600, 0, 8, 1);
        return opened ? (right ? k_whole : "another line") : k_none;
    }
    std::string load_form() {
        form.load();
        settle();
        try {
            const TerminalSettings s = read_terminal_settings("ampdesk.dat");
            return s.port == 3 && s.baud == 1200 && !s.echo ? k_whole : s.port ? "a port" : k_none;
        } catch (const RunTimeError&) {
            return k_none;
        }
    }
    std::string restore_windows() {
        QMainWindow window;
        LayoutKeeper keeper(window, "layout.dat");
        keeper.restore_main();
        const bool restored = window.width() == 456;
        if (!restored) {  // a sound one is replaced in the end, of course
            UnsavedFiles unsaved;
            unsaved.attempt("layout.dat",
                            [&] { write_titled_lines("layout.dat", layout_lines(keeper.layout())); });
            unsaved.tell(person);
        }
        return was(restored);
    }
    std::string configure() {
        const auto [site, warnings] = read_site_configuration("ampdesk.ini");
        for (const std::string& warning : warnings) told.push_back(warning);
        return was(site.gauge_minimum == 35 && site.negative_words == NegativeWords::two_complement);
    }
    std::string help() {
        const HelpSection section = read_help(host.services().options, 1);
        if (section.refusal)
            told.push_back(std::string(section.refusal->what()) + "|mhelp.txt");
        return section.lines.empty() ? k_none : was(section.lines.size() == 2);
    }
};

// A damaged file that ends the program, is half taken, changed by being read, or passed over without a
// word; a whole one that is refused.
TEST_F(DamagedFiles, AreToldAndLeftAlone) {
    bus.add({.address = 1, .serial = 1001, .noise = 0});
    const std::string amplifier = "RS-485\r\nCOM1:\r\n6\r\n1\r\n";
    const std::set<std::string> ignored = {"missing", "folder", "empty", "other", "cut", "odd"};
    const ReadFile files[] = {
        {.name = "com1001.dat",
         .sound = amplifier,
         .read = [&] { return was(open_amplifier() == "opened"); }},
        {.name = "set1001.dat",
         .sound = "Color Settings\r\n 1\r\n 2\r\n 14\r\n 3\r\n",
         .read = [&] { return open_amplifier(); },
         .between = {"missing opened", "folder opened"},
         .silent = {"missing"}},
        {.name = "rs485.dat",
         .sound = "RS-485\r\nCOM3:\r\n7\r\n12\r\n",
         .read = [&] { return read_fields(); },
         .between = {"cut COM2:", "cut COM3:", "odd COM3:",
                     "odd -99999999999"},  // the dialog checks what it shows
         .silent = ignored},
        {.name = "rs422.dat",
         .sound = "RS-422\r\nCOM4:\r\n3\r\n2\r\n2\r\n1\r\n",
         .read = [&] { return open_remotely(); },
         .between = {"odd another line"},  // any mad parity is none
         .named = false},
        {.name = "ampdesk.dat",
         .sound = "ampdesk settings\r\n3\r\n1200\r\n8\r\n0\r\n1\r\n0\r\n0\r\n",
         .read = [&] { return load_form(); },
         .between = {"cut a port", "odd a port", "odd whole"},
         .silent = {"missing", "folder", "cut", "odd"}},
        {.name = "layout.dat",
         .sound = "ampdesk layout\r\nmain 1 2 456 300 0\r\nhead 1001 1 2 300 200 0\r\n",
         .read = [&] { return restore_windows(); },
         .between = {"cut whole", "odd whole"},  // the heads' lines are not looked at here
         .silent = {"missing", "empty", "cut", "odd"}},
        {.name = "ampdesk.ini",
         .sound = "[gauge]\r\nminimum=35\r\n[amplifier]\r\nnegative_words=signed\r\n",
         .read = [&] { return configure(); },
         .silent = {"missing", "empty", "folder", "cut"}},
        {.name = "mhelp.txt",
         .sound = "machine help\r\n1\r\n\"one\"\r\n\"two\"\r\n[END]\r\n",
         .read = [&] { return help(); },
         .between = {"cut whole", "odd whole"},  // another line of text
         .silent = {"missing", "folder", "cut", "odd"}},
    };
    for (const ReadFile& file : files) {
        const std::string at = folder / file.name;
        const auto read = [&](const std::string& damage) {
            SCOPED_TRACE(file.name + (" " + damage));
            struct stat before {};
            struct stat after {};
            const bool there = stat(at.c_str(), &before) == 0;
            told.clear();
            const uid_t user = geteuid();
            const bool step_down = damage == "unreadable" && user == 0;  // no mode stops the superuser
            ASSERT_EQ(step_down ? seteuid(65534) : 0, 0);
            const std::string came = file.read();
            ASSERT_EQ(seteuid(user), 0);
            const bool sound = damage == "sound" || damage == "LF";
            if (sound || damage == "huge")
                EXPECT_EQ(came, k_whole);
            else
                EXPECT_TRUE(came == k_none || file.between.count(damage + " " + came) > 0) << came;
            if (came == k_none) {
                EXPECT_EQ(told.empty(), file.silent.count(damage) > 0) << testing::PrintToString(told);
            }
            for (const std::string& text : told)
                EXPECT_EQ(text.find(file.name) != std::string::npos, file.named) << text;
            // The same file, not one that was put in its place; but a closing window keeps its look, and
            // the end of the program a layout that it has read.
            const bool own = (file.name == std::string("set1001.dat") && came != k_none) ||
                             (file.name == std::string("layout.dat") && file.silent.count(damage) > 0);
            const std::string aside = at + ".bad";
            if (there && !own) {
                ASSERT_EQ(stat(file_exists(aside) ? aside.c_str() : at.c_str(), &after), 0);
                EXPECT_EQ(after.st_ino, before.st_ino);
                EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
                EXPECT_EQ(after.st_size, before.st_size);
            }
            std::filesystem::remove_all(at);
            std::filesystem::remove(aside);
        };
        if (file.name != std::string("com1001.dat"))
            folder.put("com1001.dat", amplifier);
        std::filesystem::remove(folder / "set1001.dat");
        std::string lines = file.sound;
        lines.erase(std::remove(lines.begin(), lines.end(), '\r'), lines.end());
        const auto read_bytes = [&](const std::string& damage, const std::string& bytes) {
            folder.put(file.name, bytes);
            read(damage);
        };
        read_bytes("sound", file.sound);
        read_bytes("LF", lines);
        read("missing");
        read_bytes("empty", "");
        read_bytes("other", std::string(file.sound.size(), '\0'));
        std::string rubbish;
        for (unsigned i = 0; i < 5000; ++i) rubbish += static_cast<char>((i * 7919) >> 3);
        read_bytes("other", rubbish);
        for (std::size_t end = lines.find('\n') + 1; end < lines.size(); end = lines.find('\n', end) + 1) {
            read_bytes("cut", lines.substr(0, end));
            const std::size_t next = lines.find('\n', end);
            read_bytes("odd", lines.substr(0, end) + "-99999999999" + lines.substr(next));
        }
        folder.put(file.name, file.sound);
        std::filesystem::resize_file(at, std::uintmax_t{1} << 33);
        read("huge");
        std::filesystem::create_directory(at);
        read("folder");
        folder.put(file.name, file.sound);
        ASSERT_EQ(chmod(at.c_str(), 0), 0);
        read("unreadable");
    }
}

}  // namespace
}  // namespace ampdesk
