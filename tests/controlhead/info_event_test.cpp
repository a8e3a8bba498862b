// The information screen and the event list as rows of the display.
#include "platform/numbers.h"
#include "tests/controlhead/screen_test.h"

namespace ampdesk {
namespace {

using InfoScreen = ScreenTest;

// A field taken for its neighbour, a line of the status screen left standing, a line too long.
TEST_F(InfoScreen, ShowsTheIdentity) {
    services.options.identity_patterns = {{"(", "x"}, {"([0-9]+)-([A-Z]+)", "$2 of $1"}, {"Rev", "Revision"}};
    const std::string nothing = k_blank + "|  Serial#   ----    |" + k_blank;
    const struct {
        std::string identity;
        std::string rows;
    } cases[] = {
        {"HPA*CKX*1234*110-AB Rev C", "   Model CKX BAND   |  Serial#   1234    |AB of 110 Revision C"},
        {"*DESIGNATION* 0017 A *123456789012345678901",
         "   Model DESIGNATION|  Serial#   17      |12345678901234567890"},
        {"*\x01\x85\xB0*9*\x7F\r\xFF",
         "   Model   \260 BAND   |  Serial#   9       |  \377                 "},
        {"HPA*KU", "   Model KU BAND    |  Serial#   ----    |                    "},
        {"*KU*9", nothing},
        {"", nothing},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.identity);
        reply_to(k_identity_request) = c.identity;
        open(2, 1);
        EXPECT_EQ(lines(), "JEX Quorvalitics Inc|" + c.rows);
        press(2);
        EXPECT_EQ(head.panel.line(1), " --System Hours--   ");
    }
}

class EventScreen : public ScreenTest {
  protected:
    EventScreen() {
        // Missing entries are refused.
        port.responder = [this, usual = port.responder](const std::string& frame) {
            const std::string command = frame.substr(3, frame.size() - 5);
            if (silent || !command.starts_with("\xA0\x1A") || replies.contains(command))
                return usual(frame);
            const std::string refused = build_reply_frame(Crc16{}, k_nak, 1, command + '\4');
            return ScriptedPort::Answer{{std::chrono::milliseconds(20), refused}};
        };
    }
    std::string& entry(int n) { return reply_to("\xA0\x1A" + std::string(1, static_cast<char>(n))); }
    void put_entries(int count) {
        std::erase_if(replies, [](const auto& r) { return r.first.starts_with("\xA0\x1A"); });
        for (int n = 0; n < count; ++n) entry(n) = "event " + std::to_string(n);
    }
    void expect_from(int first, int count, int maximum) const {
        expect_numbered(first, count,
                        [](const std::string& n) { return right_aligned(n, 3) + " event " + n; });
        EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, maximum, first}));
    }
};

// Text in the wrong column or cut at the wrong place; an empty reply taken for an entry.
TEST_F(EventScreen, LaysOutAnEntry) {
    entry(0) = "HV on";
    entry(1) = "1234567890123456789";
    entry(2) = "a\nb\x90\xB0";
    entry(3) = "";
    open(4, 1);
    EXPECT_EQ(lines(),
              "  0 HV on           |  1 1234567890123456|  2 a b \260           |                    ");
    press(4);
    EXPECT_EQ(head.panel.line(4), "ATTN EVENT HELP MORE");
    EXPECT_FALSE(head.panel.scroll().visible);
}

// A bar beyond its end when the log is cleared while its end is looked for.
TEST_F(EventScreen, OutlivesAClearedLog) {
    put_entries(10);
    open(4, 1);
    port.responder = [this, usual = port.responder](const std::string& frame) {
        const auto reply = usual(frame);
        if (frame[5] == '\x9')
            put_entries(0);
        return reply;
    };
    VScroll1_Change(head, 60);
    expect_from(9, 0, 9);
}

// The late reply to the request for one entry shown as the next one.
TEST_F(EventScreen, TakesNoEntryForAnother) {
    put_entries(10);
    port.responder = [usual = port.responder, late = 1](const std::string& frame) mutable {
        std::string asked = frame;
        if (frame[5] == '\1' && late-- > 0)
            asked[5] = '\0';
        return usual(asked);
    };
    open(4, 1);
    expect_from(0, 10, 99);
}

// A key or the bar that runs past an end of the log, or cannot reach what is there.
TEST_F(EventScreen, KeysAndBarStopAtBothEnds) {
    put_entries(10);
    open(4, 1);
    expect_from(0, 10, 99);
    const std::pair<std::int16_t, int> steps[] = {{0, 0}, {2, 0}, {1, 1}, {1, 2}, {0, 1}, {3, 5},
                                                  {3, 9}, {3, 9}, {1, 9}, {2, 5}, {2, 1}, {2, 0}};
    int maximum = 99;
    for (const auto& [key, first] : steps) {
        press(key);
        maximum = first == 9 ? 9 : maximum;
        expect_from(first, 10, maximum);
    }
    press(4);
    const struct {
        int count;
        int moved_to;
        int first;
        int maximum;
    } moves[] = {{10, 60, 9, 9},    {10, 3, 3, 99},   {2, 99, 1, 1},      {0, 50, 0, 0},
                 {100, 96, 96, 99}, {99, 97, 97, 98}, {150, 99, 99, 252}, {256, 252, 252, 252}};
    for (const auto& move : moves) {
        SCOPED_TRACE(std::to_string(move.count) + " entries, to " + std::to_string(move.moved_to));
        put_entries(256);
        open(4, 1);
        put_entries(move.count);
        if (move.moved_to > 99)
            VScroll1_Change(head, 99);  // makes the bar longer
        VScroll1_Change(head, move.moved_to);
        expect_from(move.first, move.count, move.maximum);
        press(4);
    }
}

// A silent amplifier taken for an empty log; a page that is not tried again; a list that is lost.
TEST_F(EventScreen, SilenceIsNotTheEndOfTheLog) {
    silent = true;
    open(4, 1);
    EXPECT_EQ(head.panel.line(1), k_blank);
    silent = false;
    go_mute(k_status_request);
    updateDisplay(head);  // refused, but nothing says that it is there
    set_status(0);
    put_entries(10);
    updateDisplay(head);
    expect_from(0, 10, 99);
    VScroll1_Change(head, 4);
    expect_from(4, 10, 99);
    interrupt();
    expect_from(4, 10, 99);
}

}  // namespace
}  // namespace ampdesk
