// The attenuation adjustment: what the scroll bar sends and what the readout shows.
#include "controlhead/keypad.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using Sent = std::vector<std::string>;

class AttenuationTest : public HeadTest {
  protected:
    AttenuationTest() {
        set_analog("4=355 12=125");
        set_menu(head);
        cmdKey_Click(head, 0);
        take_sent();
    }
};

std::string setting(int value) {
    return {16, 24, static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}

// Catches values that collide with the keys 88 and 99, and a wrong byte order.
TEST_F(AttenuationTest, EveryValueCanBeSet) {
    for (int value = 0; value <= 300; ++value) {
        if (value == 125)
            continue;  // there the bar stands already
        VScroll1_Change(head, value);
        ASSERT_EQ(take_settings(), Sent{setting(value)}) << value;
        ASSERT_EQ(head.atten_value, value);
        ASSERT_TRUE(head.gain_mode);
    }
    set_gain(head, 301);
    EXPECT_EQ(take_settings(), (Sent{{16, 24, 44, 1}}));
    set_gain(head, 302);
    set_attenuation(head, -1);
    EXPECT_EQ(take_settings(), Sent{}) << "out of range";
}

// Catches a bar left at a value that the amplifier does not have, and a second setting sent by the
// bar's own move back.
TEST_F(AttenuationTest, RefusedValuePutsTheBarBack) {
    refusal = 3;
    VScroll1_Change(head, 200);
    EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, 300, 125}));
    VScroll1_Change(head, 125);  // the window reports that move
    EXPECT_EQ(take_settings(), Sent{setting(200)});
    EXPECT_EQ(person.take_texts(), Sent{"Remote Is Not On"});

    silent = true;
    VScroll1_Change(head, 201);
    EXPECT_EQ(head.panel.scroll().value, 125) << "what the amplifier had when last heard of";
    silent = false;
    refusal = 0;
    VScroll1_Change(head, 202);
    EXPECT_EQ(take_settings(), (Sent{setting(201), setting(202)})) << "the operator's next move counts";
}

// Catches a program's move beyond the ends of the bar.
TEST_F(AttenuationTest, ProgramMovesAreClamped) {
    for (const auto& [to, at] : {std::pair{-5, 0}, {301, 300}, {17, 17}}) {
        assign_potValue(head, to);
        EXPECT_EQ(head.panel.scroll().value, at);
    }
}

// Catches a wrong format, a marker that stands still, an alarm that does not blink.
TEST_F(AttenuationTest, Readout) {
    EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, 300, 125}));
    EXPECT_EQ(head.panel.lamp(1), LampColour::yellow);
    EXPECT_EQ(head.panel.line(3), "Helix Current 03.6ma");
    EXPECT_EQ(head.panel.line(4), "ATTN>12.5dB     MORE");
    set_analog("1=500 4=12345 12=300");
    updateDisplay(head);
    EXPECT_EQ(lines(), "Fwd Power     50 dBm|Rev Power      0 dBm|Helix Current123.5ma|ATTN   30dB     MORE");
    set_alarm("1,Overdrive");
    for (const char* row : {"                    ", "Overdrive           ", "                    "}) {
        updateDisplay(head);
        EXPECT_EQ(head.panel.line(3), row);
    }
    cmdKey_Click(head, 3);
    EXPECT_EQ(head.menu_ptr, 1);
    EXPECT_FALSE(head.gain_mode || head.panel.scroll().visible);
    EXPECT_EQ(head.panel.lamp(1), LampColour::dark);
    EXPECT_EQ(lines().substr(42), "Overdrive           |ATTN       HELP MORE");

    head.menu_ptr = 4;
    set_menu(head);
    cmdKey_Click(head, 0);
    EXPECT_EQ(head.panel.line(4), "ATTN>  30dB     MORE");
    EXPECT_EQ(head.panel.line(3), "Ek  0.00kV Iw123.5ma");
    updateDisplay(head);
    EXPECT_EQ(head.panel.line(4), "ATTN   30dB     MORE");
}

}  // namespace
}  // namespace ampdesk
