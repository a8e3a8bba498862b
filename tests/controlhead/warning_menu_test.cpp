// The warning levels as rows of the display, with keys, scroll bar and display ticks.
#include "tests/controlhead/screen_test.h"

namespace ampdesk {
namespace {

class WarningMenu : public ScreenTest {
  protected:
    WarningMenu() { reply_to(k_limits_request) = block("1=55 2=120 3=1250 4=585 5=402 6=5"); }
    void expect_page(const std::string& title_and_value) const {
        EXPECT_EQ(lines(), "Warning level for   |" + title_and_value + "|                MORE");
    }
};

// A title, item, scaling or blank of another page; MORE that stops at the end.
TEST_F(WarningMenu, MorePagesThroughAllLevels) {
    const char* const temperatures_and_helix[] = {"Cabinet Temperature:|[     55\260C]         ",
                                                  "TWT Temperature:    |[    120\260C]         ",
                                                  "Helix Current:      |[     12.5mA]       "};
    const char* const powers[2][3] = {
        {"over forward power: |[     58.5 dBm]     ", "under forward power:|[     40.2 dBm]     ",
         "over reverse power: |[      0.5 dBm]     "},
        {"Ku over fwd power:  |[     58.5 dBm]     ", "Ku under fwd power: |[     40.2 dBm]     ",
         "Ku over rev power:  |[      0.5 dBm]     "}};
    for (const std::int16_t bands : {std::int16_t{0}, std::int16_t{1}}) {
        head.band_count = bands;
        open(3, 0);
        expect_page("over forward power: |    [ 58.5 dBm]     ");  // as it is drawn on entry
        updateDisplay(head);
        for (int page = 0; page <= 6; ++page) {
            press(1);  // means nothing here
            expect_page(page % 6 < 3 ? powers[bands][page % 6] : temperatures_and_helix[page - 3]);
            press(3);
        }
        press(4);
        EXPECT_EQ(head.panel.line(4), "WARNINGS   HELP MORE");
    }
}

// An adjust state that does not show or is not left; a bar the right way up or lost on the way.
TEST_F(WarningMenu, AdjustStatePagesByKeyAndUpsideDownBar) {
    open(3, 0);
    press(0);
    EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, 5, 5}));
    EXPECT_EQ(head.panel.lamp(1), LampColour::yellow);
    expect_page("over forward power: |>     58.5 dBm<     ");
    updateDisplay(head);
    expect_page("over forward power: |      58.5 dBm      ");
    updateDisplay(head);
    press(1);  // at the first page already
    press(3);  // MORE pages only outside
    expect_page("over forward power: |>     58.5 dBm<     ");
    VScroll1_Change(head, 0);
    press(2);  // at the last page already
    expect_page("Helix Current:      |>     12.5mA<       ");
    press(1);
    expect_page("TWT Temperature:    |>    120\260C<         ");
    interrupt();
    EXPECT_EQ(head.panel.line(2), "TWT Temperature:    ");
    EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, 5, 1}));
    EXPECT_EQ(head.panel.lamp(1), LampColour::yellow);
    for (const std::int16_t leave : {std::int16_t{0}, std::int16_t{4}}) {
        press(leave);
        expect_page("TWT Temperature:    |[    120\260C]         ");
        EXPECT_FALSE(head.panel.scroll().visible);
        EXPECT_EQ(head.panel.lamp(1), LampColour::dark);
        press(0);
    }
}

// A display torn by an overflow, a level made up of bytes that the block does not have.
TEST_F(WarningMenu, OddLimits) {
    open(3, 0);
    updateDisplay(head);
    reply_to(k_limits_request) = block("4=32768");
    updateDisplay(head);
    expect_page("over forward power: |[     58.5 dBm]     ");
    EXPECT_EQ(head.link_fail_count, 1);
    reply_to(k_limits_request) = std::string(7, '\1');  // half of word 4
    updateDisplay(head);
    expect_page("over forward power: |[      0.0 dBm]     ");
}

}  // namespace
}  // namespace ampdesk
