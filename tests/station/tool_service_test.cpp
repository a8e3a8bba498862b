// The service tools without their windows: what is told of a transfer from its beginning to each of its ends.
#include "station/tool_service.h"

#include "tests/station/rig.h"

namespace ampdesk {
namespace {

using Mode = NvramTransfer::Mode;

class ToolServiceTest : public StationTest {
  protected:
    ToolServiceTest() { bus.open_bus_port("COM1:", 9600, 0, 8, 1); }

    void take(const ToolNotice& notice) {
        panel = std::get<notice::NvramState>(notice).panel;
        ++told;
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
    int told = 0;
    ToolService tools{station, bus, person,
                      [this](const std::string& /*key*/, const ToolNotice& notice) { take(notice); }};
};

// Another amplifier is read, a pause that does not hold, a second transfer beside the first; menu items that
// stay dead behind a file that cannot be opened; a reply that comes to a transfer that is gone.
TEST_F(ToolServiceTest, ATransferFromItsBeginningToItsEnd) {
    begin(Mode::set, "none.txt", 1);
    EXPECT_FALSE(panel);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(person.take_texts(), Texts{"File not found"});

    begin(Mode::read, "nv.txt", 2);
    live(1s);
    EXPECT_TRUE(port.requests.empty());
    tools.take(act::StartNvram{});
    live(100ms);
    tools.take(act::PauseNvram{});
    live(100ms);
    port.requests.clear();
    begin(Mode::read, "other.txt", 3);
    live(1s);
    EXPECT_TRUE(port.requests.empty() && panel->under_way && panel->start_enabled);
    EXPECT_EQ(file_bytes(folder / "other.txt"), "");

    tools.take(act::StartNvram{});
    for (int i = 0; !bus.under_way() && i < 100; ++i) live(50ms);
    tools.take(act::ExitNvram{});
    live(20s);
    EXPECT_FALSE(panel);
    EXPECT_EQ(port.requests.at(0).first, 2);
    begin(Mode::set, "nv.txt", 3);
    EXPECT_EQ(panel->caption, "Setting nvRam Parameters");
}

}  // namespace
}  // namespace ampdesk
