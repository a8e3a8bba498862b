// What the walk does not come by: odd values, refusals and silence on the screens.
#include "controlhead/band.h"
#include "controlhead/menu_engine.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

// A wrong band table, and a band that is asked for where there is none or at each refresh.
TEST_F(HeadTest, BandLabels) {
    services.options.model_capabilities = {{"VX1", 4}};
    // The last one: the command after what was read.
    const std::tuple<std::string, const char*, std::string, const char*> cases[] = {
        {"KU", "RDBAND=1", "Fwd Power      0 dBm", ""},
        {"C/KU/X", "RDBAND=2.4", "C Fwd Pwr      0 dBm", "SBAND 1"},
        {"C/KU", "RDBAND=2", "C Fwd Pwr      0 dBm", "SBAND 0"},
        {"KU/K", "RDBAND=2", "K Fwd Pwr      0 dBm", "SBAND 0"},
        {"KU/DBS", "RDBAND=0", "Ku Fwd Pwr     0 dBm", "SBAND 2"},
        {"VX1", "RDBAND=2", "DBS Fwd Pw     0 dBm", "SBAND 0"},
        {"C/KU", "RDBAND=2.7", "", "SBAND 2"},
        {"C/KU", "RDBAND=-1", "", "SBAND 2"}};
    for (const auto& [model, reply, row, next] : cases) {
        SCOPED_TRACE(model + " " + reply);
        Pump one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = model});
        const Panel& panel = one.head.panel();
        set("RDBAND", reply);
        one.start();
        EXPECT_EQ(panel.line(1), row.empty() ? "Fwd Power      0 dBm" : row);
        EXPECT_EQ(panel.legend(1), model == "KU" ? "" : "BAND");
        EXPECT_EQ(person.take_texts(), row.empty() ? Texts{"Read Band Error"} : Texts{});
        EXPECT_EQ(next_band_command(one.head.state()), next);
        sent.clear();
        one.visit();
        EXPECT_EQ(count_sent("RDBAND"), 0);
    }
}

// A damaged band number that is taken for band 0 or for the band it reads like, and a label that is left
// standing when only the reply to the change got lost.
TEST_F(HeadTest, DamagedBandIsAskedForOnceMore) {
    Pump one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = "C/KU/X"});
    const Panel& panel = one.head.panel();
    std::string damaged;
    std::string usual_reply = "RDBAND=1";
    port.responder = [&, usual = port.responder](const std::string& frame) {
        if (frame[0] == k_stx)
            set("RDBAND", std::exchange(damaged, usual_reply));
        return usual(frame);
    };
    one.start();
    for (const char* reply : {"RDBAND=\xB1", "=~RDBAND=1", "RDBAND=", "RDBAND=0", "RDBAND=2"}) {
        damaged = reply;
        one.head.press_key(4);
        one.hear();
        EXPECT_EQ(panel.line(1), "X Fwd Pwr      0 dBm") << reply;
    }
    usual_reply = damaged = "RDB?AND=A1N";
    one.head.press_key(4);
    one.hear();
    EXPECT_EQ(panel.line(1), "X Fwd Pwr      0 dBm");
    usual_reply = "RDBAND=1";
    amplifier.line.silent = true;
    one.head.press_key(1);
    one.serve();
    EXPECT_EQ(take_settings(), Texts{"SBAND 0"});
    EXPECT_TRUE(one.inside().redraw_request);
}

// A move left over from a longer bar, a state that writes over the switch beside it, and settings that the
// display does not offer: a switch whose legend is blank, SET on the page before, BAND under the readout of
// an attenuation mode that failed.
TEST_F(HeadTest, OnlyWhatTheDisplayOffersIsDone) {
    head.panel.set_scroll({.visible = true, .minimum = 0, .maximum = 5, .value = 2});
    move_bar(6);
    head.gain_mode = true;
    head.status.in_shutdown = true;  // seen by the visit that is still under way
    move_bar(4);
    head.status.in_shutdown = false;
    head.gain_mode = false;
    EXPECT_EQ(head.panel.scroll().value, 2);
    head.status.has_switch = true;
    head.status.switch_positions = 2;
    for (const char* legend : {"ATTN            MORE", "ATTN       ANT  MORE"}) {
        head.panel.set_line(4, legend);
        press({2});
    }
    EXPECT_EQ(take_settings(), Texts{"10 1A"});
    set_status(0, 0, 2, 1, 1);
    set_alarm("0,A text longer than it");
    station.hear();
    EXPECT_EQ(lines().substr(42), "A text longer thLOAD|ATTN            MORE");

    set_status(0, 16, 2);
    open(2, 0);
    set_status(0, 0, 2, 0, 1);
    station.hear();
    press({0});  // on the power-save page still
    EXPECT_EQ(take_settings(), Texts{});
    press({0});
    EXPECT_EQ(take_settings(), Texts{"10 1B 01"});

    press({4, 4});
    head.band.band_count = 1;
    head.panel.set_line(4, "ATTN>   0dB     MORE");
    press({1});
    EXPECT_EQ(take_settings(), Texts{});
}

// A gauge that shows a power nobody measures any more, or stands still beside a sub-menu.
TEST_F(HeadTest, GaugeFollowsTheForwardPower) {
    const auto after = [&](const char* analog) {
        set_analog(analog);
        station.hear();
        return head.panel.gauge();
    };
    EXPECT_EQ(after("1=563"), 56.3);
    EXPECT_EQ(after("1=-10"), std::nullopt);
    enter_sub_menu(head, k_information);
    EXPECT_EQ(after("1=480"), 48);
    set_shutdown("12,Arc");
    EXPECT_EQ(after("1=480"), std::nullopt);
    EXPECT_EQ(after("1=470"), std::nullopt);
}

// A field taken for its neighbour, a line of the status screen left standing, a line too long.
TEST_F(HeadTest, InformationOfOddIdentities) {
    services.options.identity_patterns = {{"(", "x"}, {"([0-9]+)-([A-Z]+)", "$2 of $1"}, {"Rev", "Revision"}};
    const std::string blank(20, ' ');
    const std::pair<std::string, std::string> cases[] = {
        {"HPA*CKX*1234*110-AB Rev C", "   Model CKX BAND   |  Serial#   1234    |AB of 110 Revision C"},
        {"*DESIGNATION* 0017 A *123456789012345678901",
         "   Model DESIGNATION|  Serial#   17      |12345678901234567890"},
        {"*\x01\x85\xB0*9*\x7F\r\xFF",
         "   Model   \260 BAND   |  Serial#   9       |  \377                 "},
        {"HPA*KU", "   Model KU BAND    |  Serial#   ----    |" + blank},
        {"*KU*9", blank + "|  Serial#   ----    |" + blank},
    };
    for (const auto& [identity_text, rows] : cases) {
        set(k_identity_request, identity_text);
        open(2, 1);
        EXPECT_EQ(lines(), "JEX Quorvalitics Inc|" + rows);
        press({2});
    }
}

class EventScreen : public HeadTest {
  protected:
    void put_entries(int count) {
        for (int n = 0; n < 256; ++n) set(event_request(n), n < count ? "event " + std::to_string(n) : "");
    }
    void expect_from(int first, int count, int maximum) const {
        for (int i = first; i < first + 4; ++i) {
            const std::string n = std::to_string(i);
            std::string row = i < count ? std::string(3 - n.size(), ' ') + n + " event " + n : "";
            row.resize(20, ' ');
            EXPECT_EQ(head.panel.line(i - first + 1), row);
        }
        EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, maximum, first}));
    }
};

// Text in the wrong column or cut at the wrong place; an empty reply taken for an entry; a blank one in
// the middle taken for the end.
TEST_F(EventScreen, LaysOutAnEntry) {
    const char* entries[] = {"1234567890123456789", "  ", "a\nb\x90\xB0", ""};
    for (int n = 0; n < 4; ++n) set(event_request(n), entries[n]);
    open(4, 1);
    EXPECT_EQ(lines(),
              "  0 1234567890123456|  1                 |  2 a b \260           |                    ");
}

// A bar that runs past the end of the log, or cannot reach what is there.
TEST_F(EventScreen, BarStopsAtTheEndOfTheLog) {
    const std::array<int, 4> moves[] = {{10, 60, 9, 9},     {10, 3, 3, 99},      {2, 99, 1, 1},
                                        {0, 50, 0, 0},      {100, 96, 96, 99},   {99, 97, 97, 98},
                                        {150, 99, 99, 252}, {256, 252, 252, 252}};
    for (const auto& [count, moved_to, first, maximum] : moves) {
        SCOPED_TRACE(std::to_string(count) + " entries, to " + std::to_string(moved_to));
        put_entries(256);
        open(4, 1);
        put_entries(count);
        if (moved_to > 99)
            move_bar(99);  // makes the bar longer
        move_bar(moved_to);
        expect_from(first, count, maximum);
        press({4});
    }
}

// An amplifier that says nothing past its end holds the others up; a lost reply taken for that end.
TEST_F(EventScreen, FindsTheEndOfALogWithSilenceBehindIt) {
    put_entries(10);
    open(4, 1);
    port.responder = [usual = port.responder, lost = 1](const std::string& frame) mutable {
        const std::string command = sent_frame(frame).command;
        const bool dropped = command[1] == '\x1A' && (command[2] > 9 || (command[2] == 6 && lost-- > 0));
        return dropped ? ScriptedPort::Answer{} : usual(frame);
    };
    const Instant start = clock.now();
    move_bar(60);
    expect_from(9, 10, 9);
    EXPECT_LT(clock.now() - start, std::chrono::seconds(8));
}

// A silent amplifier taken for an empty log; a page that is not tried again, or tried for ever; a key that is
// lost because the page of the one before it is still being read, and what came for that page.
TEST_F(EventScreen, SilenceIsNotTheEndOfTheLog) {
    put_entries(20);
    amplifier.line.silent = true;
    open(4, 1);
    EXPECT_EQ(lines().find_first_not_of(" |"), std::string::npos);
    EXPECT_EQ(head.requests, std::deque<Request>{}) << "before the next tick";
    amplifier.line.silent = false;
    visit();
    station.serve();
    expect_from(0, 20, 99);
    move_bar(4);
    sent.clear();
    visit(2);  // once more after a move of the bar
    EXPECT_EQ(count_sent(event_request(4)), 1);
    press_at_once({3, 1, 3});
    Reading late{.request = {.kind = Request::Kind::event, .entry = 8}, .outcome = Reading::Outcome::good};
    late.value = "event 8";
    control.take(late);
    station.serve();
    expect_from(13, 20, 99);
}

}  // namespace
}  // namespace ampdesk
