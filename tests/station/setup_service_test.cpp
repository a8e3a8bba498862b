// The setup dialogs without their windows: which line is open afterwards, and what has been kept.
#include "station/setup_service.h"

#include "platform/text_file.h"
#include "tests/station/rig.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using Outcome = SetupResult::Outcome;

const std::string k_status_failed = "Read Status Failed, Check the Settings";
const LineSettings k_former{"COM3:", 1200, 0, 8, 1};

class SetupServiceTest : public StationTest {
  protected:
    void open(SetupKind kind, const BusChoices& choices) {
        setups.take(act::OpenSetup{kind});
        setups.take(act::BeginSetup{choices});
    }
    // Until the dialog has its result.
    std::optional<Outcome> result() {
        for (int turns = 0; !ended && turns < 1000; ++turns) poll(10ms);
        return ended ? std::optional(std::exchange(ended, {})->outcome) : std::nullopt;
    }
    void begin_file(const std::string& address, const std::string& port_name) {
        folder.put("com9.dat", file(address, port_name));
        station.auto_open_dat_files({"com9.dat"});
        while (!bus.under_way()) poll(1ms);
    }

    std::optional<SetupResult> ended;
    SetupService setups{station, services, [this](const std::string& /*key*/, const SetupNotice& notice) {
                            ended = std::get<notice::SetupEnded>(notice).result;
                        }};
};

// An amplifier that is added before its fields are kept, or twice; a line that is taken from it.
TEST_F(SetupServiceTest, AnAmplifierIsAddedWhenTheDialogHasClosed) {
    const BusChoices choices{.port = "COM2:", .address = "2", .baud = 7};
    open(SetupKind::amplifier, choices);
    EXPECT_EQ(result(), Outcome::add);
    EXPECT_EQ(station.open_count(), 0);
    EXPECT_FALSE(file_exists(folder / "rs485.dat"));
    setups.take(act::CloseSetup{choices});
    let_start();
    EXPECT_EQ(file_bytes(folder / "rs485.dat"), "RS-485\r\nCOM2:\r\n7\r\n2\r\n");
    EXPECT_EQ(file_bytes(folder / "com1002.dat"), file_bytes(folder / "rs485.dat"));
    EXPECT_EQ(bus.settings(), (LineSettings{"COM2:", 19200, 0, 8, 1}));

    setups.take(act::OpenSetup{SetupKind::amplifier});
    setups.take(act::CloseSetup{choices});
    EXPECT_EQ(station.open_count(), 1);
    EXPECT_FALSE(setups.rs422_mode());
}

// The line of a remote station, or of the heads, that is lost to a dialog; a line left open that was only
// tried.
TEST_F(SetupServiceTest, GivenUpTheLineIsGivenBack) {
    for (const auto kind : {SetupKind::amplifier, SetupKind::line})
        for (const bool was_open : {true, false}) {
            SCOPED_TRACE(std::to_string(static_cast<int>(kind)) + (was_open ? ", open" : ", closed"));
            const auto before = was_open ? std::optional(k_former) : std::nullopt;
            bus.give_back(before);
            port.open_result = {};
            const bool port_fails = kind == SetupKind::line;  // else its settings are kept
            if (port_fails)
                port.open_result = {PortError::not_found, "not there"};
            open(kind, {.port = "COM1:", .address = "50"});
            EXPECT_EQ(result(), Outcome::stay_open);
            port.open_result = {};
            setups.take(act::CloseSetup{{}});
            EXPECT_EQ(bus.settings(), before);
            EXPECT_EQ(person.take_texts().size(), 1U);
        }
    open(SetupKind::line, {.port = "COM1:", .address = "1"});
    EXPECT_EQ(result(), Outcome::close);
    setups.take(act::CloseSetup{{}});
    EXPECT_EQ(bus.settings(), (LineSettings{"COM1:", 9600, 0, 8, 1}));
    EXPECT_TRUE(setups.rs422_mode() && file_exists(folder / "rs422.dat"));
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
        {"both fail", SetupKind::amplifier, "50", {.port = "COM4:", .address = "51"}, false, k_former},
        {"both fail, the file first",
         SetupKind::amplifier,
         "50",
         {.port = "COM4:", .address = "51"},
         true,
         k_former},
        {"the file opens", SetupKind::amplifier, "1", {.port = "COM4:", .address = "51"}, false, first},
        {"the dialog finds", SetupKind::amplifier, "50", {.port = "COM1:", .address = "2"}, true, first},
        {"the line is set up", SetupKind::line, "50", {.port = "COM4:", .address = "2"}, true, second},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        station.close_all();
        poll(1s);
        bus.give_back(k_former);
        if (c.file_first)
            begin_file(c.file_address, "COM1:");
        open(c.kind, c.choices);
        result();
        if (!c.file_first)
            begin_file(c.file_address, "COM1:");
        poll(10s);
        setups.take(act::CloseSetup{c.choices});
        poll(10s);
        EXPECT_EQ(bus.settings(), c.expected);
        person.take_texts();
    }
}

}  // namespace
}  // namespace ampdesk
