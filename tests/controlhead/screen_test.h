// What the tests of the sub-menu screens share.
#pragma once

#include <functional>

#include "controlhead/keypad.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {

inline const std::string k_blank(20, ' ');

class ScreenTest : public HeadTest {
  protected:
    void press(std::int16_t key) { cmdKey_Click(head, key); }
    void open(std::int16_t screen, std::int16_t key) {
        head.menu_ptr = screen;
        press(key);
    }
    // Four rows of one text each, blank from `end` on.
    void expect_numbered(int first, int end,
                         const std::function<std::string(const std::string&)>& text) const {
        for (int i = 0; i < 4; ++i) {
            std::string row = first + i < end ? text(std::to_string(first + i)) : "";
            row.resize(20, ' ');
            EXPECT_EQ(head.panel.line(i + 1), row);
        }
    }
    // Silent until the communication error screen is up, then back with the next tick.
    void interrupt() {
        silent = true;
        for (int i = 0; i < 3; ++i) updateDisplay(head);
        EXPECT_EQ(head.panel.line(1), "RS485 Communication ");
        EXPECT_FALSE(head.panel.scroll().visible);
        silent = false;
        head.amplifier.get_ana_block();  // as the next look would
        updateDisplay(head);
    }
};

}  // namespace ampdesk
