// The service tools without their windows: what is told of a transfer from its beginning to each of its ends.
#include "station/tool_service.h"

#include "platform/text_file.h"
#include "tests/station/rig.h"

namespace ampdesk {
namespace {

using Mode = NvramTransfer::Mode;

class ToolServiceTest : public StationTest {
  protected:
    ToolServiceTest() { bus.open_bus_port("COM1:", 9600, 0, 8, 1); }

    void take(const ToolNotice& notice) {
        panel = std::get<notice::NvramState>(notice).panel;
        under_way_when_told.push_back({person.messages.size(), panel && panel->under_way});
    }
    void live(std::chrono::milliseconds length) {
        for (; length > 0ms; length -= 50ms) {
            poll(50ms);
            tools.step();
        }
    }
    void begin(Mode mode, const std::string& name, std::int16_t address) {
        tools.take(act::BeginNvram{mode, folder / name, address});
    }

    std::optional<NvramPanel> panel;
    std::vector<std::pair<std::size_t, bool>> under_way_when_told;  // after so many boxes
    ToolService tools{station, bus, person,
                      [this](const std::string& /*key*/, const ToolNotice& notice) { take(notice); }};
};

// Another amplifier is read, a pause that does not hold, an end that leaves the transfer where it was; menu
// items that stay dead behind a file that cannot be opened.
TEST_F(ToolServiceTest, ATransferFromItsBeginningToItsEnd) {
    begin(Mode::set, "none.txt", 1);
    EXPECT_FALSE(panel);
    EXPECT_EQ(under_way_when_told.size(), 1U);
    EXPECT_EQ(person.take_texts(), Texts{"File not found"});

    begin(Mode::read, "nv.txt", 2);
    live(1s);
    EXPECT_TRUE(port.requests.empty());
    tools.take(act::StartNvram{});
    live(100ms);
    tools.take(act::PauseNvram{});
    live(100ms);
    port.requests.clear();
    begin(Mode::read, "other.txt", 3);  // one at a time
    live(1s);
    EXPECT_TRUE(port.requests.empty() && panel->under_way && panel->start_enabled);
    EXPECT_FALSE(file_exists(folder / "other.txt"));

    tools.take(act::StartNvram{});
    live(10s);
    EXPECT_EQ(panel->status, "nvRam Transfer was Successful");
    for (const auto& [address, command] : port.requests) EXPECT_EQ(address, 2);
    tools.take(act::ExitNvram{});
    EXPECT_FALSE(panel);
    EXPECT_EQ(read_text_lines(folder / "nv.txt").size(), 1 + demo::SimNvram::k_blocks);
    begin(Mode::set, "nv.txt", 3);
    EXPECT_EQ(panel->caption, "Setting nvRam Parameters");
}

// A window that stays open over a transfer that has given itself up, or a question about it that outlives the
// box that tells so; a reply that comes to a transfer that is gone.
TEST_F(ToolServiceTest, ATransferThatIsLost) {
    begin(Mode::read, "lost.txt", 1);
    tools.take(act::StartNvram{});
    live(100ms);
    sim.find(1)->line.silent = true;
    live(20s);
    EXPECT_FALSE(panel);
    EXPECT_EQ(person.take_texts(), Texts{"Cmd Receiving Error, Check Connection"});
    EXPECT_EQ(under_way_when_told.at(under_way_when_told.size() - 2), std::pair(std::size_t{0}, false));

    begin(Mode::read, "again.txt", 1);
    tools.take(act::StartNvram{});
    while (!bus.under_way()) live(50ms);
    tools.take(act::ExitNvram{});
    live(20s);
    EXPECT_FALSE(panel);
}

}  // namespace
}  // namespace ampdesk
