// What the panel makes of the texts it is given, and the fault log.
#include "controlhead/panel.h"

#include <gtest/gtest.h>

#include "controlhead/fault_log.h"

namespace ampdesk {
namespace {

// Catches control bytes on the display, a degree sign that is lost, and a line number out of range.
TEST(Panel, LinesAndLegends) {
    Panel panel;
    panel.set_line(1, "a\x07\x7F\x9F\xA0\xB0z");
    EXPECT_EQ(panel.line(1), std::string("a   \xA0\xB0z") + std::string(13, ' '));
    panel.set_line(2, "twenty-two characters!");
    EXPECT_EQ(panel.line(2), "twenty-two characters!");
    panel.set_line(0, "x");
    panel.set_line(5, "x");
    panel.set_line(4, "SETUP INFO HELP MOREover");
    const char* legends[] = {"SETUP", "INFO", "HELP", "MORE"};
    for (int key = 0; key < 4; ++key) EXPECT_EQ(panel.legend(key), legends[key]);
    EXPECT_EQ(panel.legend(4), "");
}

// Catches a window that repaints for nothing, or does not repaint.
TEST(Panel, TellsOfChangesOnly) {
    Panel panel;
    int changes = 0;
    panel.on_change = [&] { ++changes; };
    for (int round = 0; round < 2; ++round) {
        panel.set_line(1, "x");
        panel.set_lamp(8, LampColour::red);
        panel.set_lamp(9, LampColour::red);
        panel.set_scroll({true, 0, 10, 3});
        panel.set_gauge(5.0);
        panel.set_look({.fore_colour = 1});
    }
    EXPECT_EQ(changes, 5);
    panel.hide_scroll();
    EXPECT_EQ(panel.scroll(), (ScrollBar{false, 0, 10, 3}));
}

// Catches a wrong width, order or count.
TEST(FaultLog, KeepsTheNewestFirst) {
    FaultLog log;
    for (int minute = 0; minute < 120; ++minute) {
        log.log_fault({.hour = 9, .minute = minute % 60}, minute == 118 ? "a text of fifteen" : "short");
        EXPECT_EQ(log.count(), std::min(minute + 1, 98));
    }
    EXPECT_EQ(log.entry(0), "9:59 short       ");
    EXPECT_EQ(log.entry(1), "9:58 a text of fi");
    EXPECT_EQ(log.entry(98), "9:21 short       ");
    log.log_fault({.hour = 9, .minute = 5}, "123456789012345");
    EXPECT_EQ(log.entry(0), "9:5 1234567890123");
}

}  // namespace
}  // namespace ampdesk
