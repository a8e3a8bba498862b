// The setup dialogs without their windows: what OK does, which line is open afterwards, and what has been
// kept.
#include "station/setup_service.h"

#include "platform/text_file.h"
#include "tests/station/rig.h"

namespace ampdesk {
namespace {

using Outcome = SetupResult::Outcome;

const std::string k_com_settings = "Com Settings Are Not Valid, Select Settings Again.";
const std::string k_failed = "Read Status Failed, Check the Settings";
const LineSettings k_former{"COM3:", 1200, 0, 8, 1};

struct SetupRig : Rig {
    // OK; the dialog's result.
    std::optional<SetupResult> ok(const BusChoices& choices) {
        ended.reset();
        setups.take(act::BeginSetup{choices});
        for (int turns = 0; !ended && turns < 1000; ++turns) poll(10ms);
        EXPECT_FALSE(!person.pointer.empty() && person.pointer.back());
        return ended;
    }

    std::optional<SetupResult> ended;
    SetupService setups{station, services, [this](const std::string& /*key*/, const SetupNotice& notice) {
                            ended = std::get<notice::SetupEnded>(notice).result;
                        }};
};

struct SetupServiceTest : testing::Test, protected SetupRig {};

// A failure in other words or without its cause, a question that is asked in vain or whose answer is lost, a
// line that is taken from the open heads.
TEST(SetupService, LooksForANewAmplifier) {
    const SetupResult stay{};
    const SetupResult close{.outcome = Outcome::close};
    const auto add = [](const char* number, const char* model) {
        return SetupResult{Outcome::add, 2, number, model};
    };
    const struct {
        const char* name;
        const char* address;
        SetupResult expected;
        std::string told{};  // text|detail
        std::string lost{};  // the request that nobody answers
        std::optional<std::string> typed{};
        bool other_open = false;  // amplifier 1, on the same line
        std::size_t opened = 1;
        bool port_fails = false;
    } cases[] = {
        {"port fails", "2", stay, k_com_settings + "|held by x", "", {}, false, 1, true},
        {"silent", "50", stay, k_failed + "|"},
        {"all well", "2", add("1002", "KU")},
        {"no 32-bit number", "9", stay, "Overflow|"},
        {"number typed", "2", add("77", "KU"), "", "RDS/N", "77"},
        {"line changes", "2", stay, k_failed + "|Another line has been opened meanwhile", "RDS/N", "77",
         false, 2},
        {"band cancelled", "2", close, "", "*IDN?"},
        {"band typed", "2", add("1002", "K"), "", "*IDN?", "K"},
        {"taken", "1", stay, "This Address Is Used, Please Pick Up Another One.|", "", {}, true, 0},
        {"beside another", "2", add("1002", "KU"), "", "", {}, true, 0, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SetupRig rig;
        rig.sim.add({.address = 9, .serial = 99'999'999'999});
        if (c.other_open)
            rig.open({1});
        rig.port.opened.clear();
        rig.port.open_result = {c.port_fails ? PortError::in_use : PortError::none, "held by x"};
        rig.port.lost_request = c.lost;
        rig.person.inputs = {c.typed};
        rig.person.bands = {c.typed.value_or("")};
        rig.person.on_input = [&] {
            if (c.opened == 2)
                rig.bus.open_bus_port("COM1:", 1200, 0, 8, 1);
        };
        rig.setups.take(act::OpenSetup{SetupKind::amplifier});
        EXPECT_EQ(rig.ok({.port = "COM3:", .address = c.address}), c.expected);
        std::string told;
        for (const Message& m : rig.person.messages) told += m.text + "|" + m.detail;
        EXPECT_EQ(told, c.told);
        EXPECT_EQ(rig.port.opened.size(), c.opened);
        EXPECT_EQ(rig.person.inputs.size() + rig.person.bands.size(), c.lost.empty() ? 2U : 1U);
    }
}

// Settings that are kept though they do not open, or not kept though they do; a silent line without a word.
TEST_F(SetupServiceTest, SetsUpTheLine) {
    const std::string path = folder / "rs422.dat";
    BusChoices choices{.port = "COM1:", .address = "3", .baud = 3, .bits = 0, .stop = 1, .parity = 2};
    setups.take(act::OpenSetup{SetupKind::line});
    EXPECT_EQ(ok(choices), SetupResult{.outcome = Outcome::close});
    choices.address = "50";
    EXPECT_EQ(ok(choices), SetupResult{.outcome = Outcome::close});
    EXPECT_EQ(person.take_texts(),
              Texts{"Com Settings Are Probably Not Right, Select Settings Again When Not Communicating"});
    EXPECT_EQ(port.opened.at(1), (PortSettings{"/dev/ttyS0", 1200, 'e', 5, 2}));
    EXPECT_EQ(port.requests, (std::vector<std::pair<int, char>>{{3, '\x11'}, {50, '\x11'}}));
    EXPECT_EQ(file_bytes(path), "RS-422\r\nCOM1:\r\n3\r\n0\r\n2\r\n1\r\n");
    EXPECT_TRUE(setups.rs422_mode());
    setups.take(act::CloseSetup{choices});
    EXPECT_EQ(bus.settings(), (LineSettings{"COM1:", 1200, 2, 5, 2}));
}

// The line of a remote station, or of the heads, that is lost to a dialog, by a second OK or a Cancel in the
// middle, too; a line left open that was only tried.
TEST_F(SetupServiceTest, GivenUpTheLineIsGivenBack) {
    for (const auto kind : {SetupKind::amplifier, SetupKind::line})
        for (const auto& before : {std::optional(k_former), std::optional<LineSettings>()}) {
            SCOPED_TRACE(std::to_string(static_cast<int>(kind)) + (before ? ", open" : ", closed"));
            bus.give_back(before);
            setups.take(act::OpenSetup{kind});
            if (kind == SetupKind::line)  // else its settings are kept
                port.open_result = {PortError::not_found, "not there"};
            for (const char* port_name : {"COM1:", "COM4:"})
                EXPECT_EQ(ok({.port = port_name, .address = "50"}), SetupResult{});
            EXPECT_EQ(person.take_texts(), Texts(2, kind == SetupKind::line ? k_com_settings : k_failed));
            setups.take(act::BeginSetup{{.port = "COM2:", .address = "50"}});
            station.step();
            port.open_result = {};
            setups.take(act::CloseSetup{{}});
            EXPECT_EQ(bus.settings(), before);
            poll(2s);
            person.take_texts();
            EXPECT_FALSE(setups.rs422_mode() || file_exists(folder / "rs422.dat"));
        }
}

// Files that are being opened under a dialog: the line that one of the two has tried is taken for the one
// before, a head loses its line to a Cancel, or the settings that somebody has just made are undone.
TEST_F(SetupServiceTest, FilesAreOpenedUnderTheDialog) {
    const LineSettings first{"COM1:", 9600, 0, 8, 1};
    const LineSettings second{"COM4:", 9600, 0, 8, 1};
    const struct {
        const char* name;
        SetupKind kind;
        const char* file_address;  // always on COM1:; 50: nobody is there
        BusChoices choices;
        bool file_first;
        LineSettings expected;
    } cases[] = {
        {"both fail", SetupKind::amplifier, "50", {"COM4:", "51"}, false, k_former},
        {"both fail, the file first", SetupKind::amplifier, "50", {"COM4:", "51"}, true, k_former},
        {"the file opens", SetupKind::amplifier, "1", {"COM4:", "51"}, false, first},
        {"the dialog finds", SetupKind::amplifier, "50", {"COM1:", "2"}, true, first},
        {"the line is set up", SetupKind::line, "50", {"COM4:", "2"}, true, second},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        station.close_all();
        poll(1s);
        bus.give_back(k_former);
        folder.put("com9.dat", file(c.file_address));
        setups.take(act::OpenSetup{c.kind});
        if (!c.file_first)
            ok(c.choices);
        station.auto_open_dat_files({"com9.dat"});
        while (!bus.under_way()) poll(1ms);
        if (c.file_first)
            ok(c.choices);
        poll(10s);
        setups.take(act::CloseSetup{c.choices});
        poll(10s);
        EXPECT_EQ(bus.settings(), c.expected);
    }
}

}  // namespace
}  // namespace ampdesk
