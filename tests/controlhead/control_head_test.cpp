// How a window starts and ends, what it tells, and acts that come late.
#include "controlhead/control_head.h"

#include <filesystem>

#include "tests/controlhead/head_fixture.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using Life = ControlHead::Life;

class ControlHeadTest : public Bench, public ::testing::Test {
  protected:
    ControlHeadTest() {
        services.options.folder = folder.path();
        reply_to("RDBAND") = "RDBAND=0";
        station.tells = false;
        station.start();
    }
    void press(std::initializer_list<std::int16_t> keys) {
        for (const std::int16_t key : keys) {
            head.press_key(key);
            station.serve();
        }
    }
    void press_hard(std::int16_t key) {
        head.press_hard_key(key);
        station.serve();
    }
    std::vector<Message> take_messages() {
        std::vector<Message> messages;
        while (auto message = head.take_message()) messages.push_back(*message);
        return messages;
    }

    const ScratchFolder folder;
    const HeadIdentity identity{.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"};
    Pump station{services, identity};
    ControlHead& head = station.head;
};

// Catches a restore that nobody wants, a wrong box, a first screen that is live without its values, and a
// damaged file that keeps its panel shut for ever.
TEST_F(ControlHeadTest, MachineInit) {
    const std::string good = "Color Settings\r\n 255\r\n 0\r\n 15\r\n 0\r\n";
    const std::string bad = "Color Settings\n 255\n 0\n";
    const std::string analog(k_analog_request);
    const char* absent = "Some remote commands are absent in Amplifier";
    const struct {
        std::string settings;
        bool restore;
        std::string mute;
        const char* analog;
        bool live, restored;
        const char* box;
    } cases[] = {
        {"", true, "", "", true, false, ""},
        {good, true, "", "", true, true, ""},
        {good, false, "", "", true, false, ""},
        {bad, true, "", "", false, false, "File set1234.dat or band_set.dat corrupted."},
        {bad, false, "", "", true, false, ""},
        {"", true, analog, "", false, false, absent},
        {"", true, "RDBAND", "", false, false, absent},
        {"", true, "", "1=-1", false, false, "Overflow"},
    };
    const auto answers = replies;
    const auto init = [&](bool restore) {
        Pump its_station(services, identity);
        ControlHead& fresh = its_station.head;
        fresh.machine_init(restore);
        EXPECT_NE(fresh.life(), Life::live) << "before anything was read";
        its_station.hear();
        EXPECT_TRUE(!fresh.started() || fresh.panel().legend(1) == "BAND" || in_shutdown(fresh.state()));
        return std::pair(fresh.life(), fresh.panel().look().fore_colour == 255);
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        std::filesystem::remove(folder / "set1234.dat");
        if (!c.settings.empty())
            folder.put("set1234.dat", c.settings);
        set_analog(c.analog);
        go_mute(c.mute);
        EXPECT_EQ(init(c.restore), std::pair(c.live ? Life::live : Life::failed, c.restored));
        for (const Message& box : person.messages) EXPECT_TRUE(box.detail.starts_with("JEX Amplifier 1234"));
        EXPECT_EQ(person.take_texts(), *c.box == '\0' ? Texts{} : Texts{c.box});
        replies = answers;
        const bool set_aside = !c.live && c.settings == bad;
        EXPECT_EQ(std::filesystem::exists(folder / "set1234.dat"), !c.settings.empty() && !set_aside);
        if (set_aside) {
            EXPECT_EQ(file_bytes(folder / "set1234.dat.bad"), bad);
        }
    }
    // Nothing can be renamed to a folder, as in a folder that cannot be written.
    std::filesystem::remove(folder / "set1234.dat.bad");
    std::filesystem::create_directory(folder / "set1234.dat.bad");
    folder.put("set1234.dat", bad);
    EXPECT_EQ(init(true).first, Life::live);
    EXPECT_EQ(person.take_texts(), Texts{"File set1234.dat or band_set.dat corrupted."});
    // What the shutdown covers is not waited for.
    set_shutdown("12,Arc");
    EXPECT_EQ(init(false).first, Life::live);
}

// Catches a box of the same words behind one that waits, of other words that is lost, or without its cause.
TEST_F(ControlHeadTest, EveryBoxOnceInItsTurn) {
    const struct {
        const char* text;
        const char* detail;
        std::function<void()> bring;
    } cases[] = {
        {"Remote Is Not On", "JEX Amplifier 1234", [&] { press_hard(0); }},
        {"Invalid file format", "JEX Amplifier 1234: mhelp.txt", [&] { press({2}); }},
        {"The amplifier did not answer", "JEX Amplifier 1234",
         [&] {
             press({3});
             go_mute(k_status_request);
             press({0});
         }},
        {"Overflow",
         "JEX Amplifier 1234: forward power comes as a negative number; negative_words=signed in ampdesk.ini "
         "accepts it",
         [&] {
             set_analog("1=-1");
             station.visit(3);
         }},
    };
    const auto answers = replies;
    folder.put("mhelp.txt", "no help\n");
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        refusal = 3;
        c.bring();
        c.bring();
        const auto messages = take_messages();
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_EQ(messages[0].text, c.text);
        EXPECT_EQ(messages[0].detail, c.detail);
        refusal = 0;
        replies = answers;
        station.visit();
        press({4, 4});
    }
    for (const int code : {3, 4}) {
        refusal = code;
        press_hard(0);
    }
    const auto messages = take_messages();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].text, "Invalid Data");
}

// Catches a value that cannot be shown told again and again, or never again once it was good for a while.
TEST_F(ControlHeadTest, OverflowIsToldOnceAScreen) {
    set_analog("3=-11200 6=-1350");
    press({3, 3, 3});
    station.visit(12);
    EXPECT_EQ(head.panel().line(2), "Eb  0.00kV          ") << "the other values are shown";
    EXPECT_EQ(head.panel().line(3), std::string(20, ' ')) << "and what was so no longer is not";
    const auto messages = take_messages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_NE(messages[0].detail.find("filament current If"), std::string::npos);
    set_analog("3=-11200");
    station.visit(12);
    EXPECT_EQ(take_messages().size(), 1U) << "the next item";
    press({4});
    station.visit();
    press({3, 3, 3});
    station.visit(12);
    EXPECT_EQ(take_messages().size(), 1U) << "after another screen";
}

// Catches a key that acts on a panel without a screen, an HV Off that waits for one or for the question
// whether to restore its colours, and a head that goes on when it has closed.
TEST_F(ControlHeadTest, BeforeAndAfterItsLife) {
    ControlHead fresh(services, {.slot = 2, .unit_address = 8, .number = "77", .model = ""});
    for (const Life life : {Life::created, Life::opening}) {
        EXPECT_EQ(fresh.life(), life);
        fresh.press_key(3);
        fresh.click_lamp(0);
        fresh.tick();
        EXPECT_TRUE(fresh.requests().empty());
        fresh.press_hard_key(1);
        ASSERT_EQ(fresh.orders().size(), 1U);
        EXPECT_EQ(std::exchange(fresh.orders(), {})[0].command, "\x10\x13");
        fresh.machine_init(true);
    }
    int changes = 0;
    const auto seen = head.views.subscribe([&](const HeadView&) { ++changes; });
    press_hard(1);
    head.press_hard_key(1);
    head.close();
    changes = 0;
    set_shutdown("1,Arc");
    take_sent();
    head.take({.request = {Request::Kind::status}, .outcome = Reading::Outcome::good, .value = Status{}});
    Setting refused;
    refused.refusal = "no";
    head.take(head.orders().front(), refused);
    head.orders().clear();
    head.tick();
    head.press_key(3);
    head.press_hard_key(0);
    head.move_scroll_bar(1, ScrollBar{true, 0, 5, 0});
    EXPECT_TRUE(head.orders().empty() && head.requests().empty() && person.beeps.empty());
    EXPECT_FALSE(head.take_message());
    EXPECT_EQ(changes, 0);
    head.machine_init(false);
    EXPECT_TRUE(head.closed());
}

// Catches a key that does what it did not say, and one whose words are another's.
TEST_F(ControlHeadTest, KeysDoWhatTheySaid) {
    const struct {
        std::initializer_list<std::int16_t> keys;
        Texts names;
    } cases[] = {
        {{4}, {"ATTN", "BAND", "HELP", "MORE"}},
        {{0}, {"Leave", "Leave", "Leave", "Leave"}},
        {{4, 2}, {"Leave", "Leave", "Leave", "Leave"}},  // help without a text
        {{4, 3, 0}, {"", "", "", "MORE"}},
        {{4, 1}, {"Leave", "Leave", "Leave", "Leave"}},
        {{4, 3, 0}, {"Adjust", "Previous page", "Next page", "MORE"}},
        {{4, 3, 1}, {"Line up", "Line down", "Page up", "Page down"}},
    };
    for (const auto& c : cases) {
        press(c.keys);
        for (int key = 0; key < 4; ++key)
            EXPECT_EQ(head.panel().key_name(key), c.names[static_cast<std::size_t>(key)]) << &c - cases;
    }
    press({4, 4});
    set_shutdown("12,Arc");
    station.visit(2);
    person.beeps.clear();
    take_sent();
    const auto press_as = [&](const char* did) {
        head.press_key(3, did);
        head.click_lamp(3, did);
        station.serve();
        return std::exchange(person.beeps, {}).size();
    };
    EXPECT_EQ(press_as("MORE"), 2U);
    EXPECT_EQ(take_settings(), Texts{});
    set_status(0);
    station.hear();
    EXPECT_EQ(press_as("OK"), 2U);
    EXPECT_EQ(head.panel().legend(0), "ATTN");
    EXPECT_EQ(press_as("MORE"), 0U);
    EXPECT_EQ(head.panel().legend(0), "WARNI");
}

// Catches a move that was made on the bar of another page, one of many on the way that is sent, and a bar
// that jumps back under the operator's hand.
TEST_F(ControlHeadTest, MovesAreOfTheBarThatWasSeen) {
    press({0});
    ScrollBar seen = head.panel().scroll();
    seen.value = 17;  // where the bar stood then is of no matter
    press({4, 3, 3, 0, 0});
    head.move_scroll_bar(3, seen);
    EXPECT_EQ(head.panel().scroll().value, 5);
    EXPECT_EQ(person.beeps.size(), 1U);
    press({4, 4, 4, 0});
    Setting refused;
    refused.outcome = Setting::Outcome::refused;
    for (const int value : {1, 2, 3}) {
        head.move_scroll_bar(value, seen);
        if (value == 1)
            head.take(std::exchange(head.orders(), {}).front(), refused);
    }
    station.hear();
    EXPECT_EQ(take_settings(), Texts{std::string("\x10\x18\x03\0", 4)});
    Reading analog{.request = {Request::Kind::analog}, .outcome = Reading::Outcome::good};
    analog.value = Analog{};
    head.move_scroll_bar(4, seen);
    head.take(std::exchange(head.orders(), {}).front(), refused);
    head.move_scroll_bar(5, seen);
    head.take(analog);
    EXPECT_EQ(head.panel().scroll().value, 5);
    head.orders().clear();
    head.take(analog);
    EXPECT_EQ(head.panel().scroll().value, 0);
    EXPECT_EQ(person.beeps.size(), 1U);
}

}  // namespace
}  // namespace ampdesk
