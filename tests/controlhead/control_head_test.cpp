// How a window starts and ends, what it tells, and acts that come late.
#include "controlhead/control_head.h"

#include <filesystem>

#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using Life = ControlHead::Life;

// Catches a restore that nobody wants, a wrong box, a first screen that is live without its values, and a
// damaged file that keeps its panel shut for ever.
TEST_F(HeadTest, Opening) {
    const std::string good = "Color Settings\r\n 255\r\n 0\r\n 15\r\n 0\r\n";
    const std::string bad = "Color Settings\n 255\n 0\n";
    const std::string analog(k_analog_request);
    const Texts corrupted{"File set1234.dat or band_set.dat corrupted."};
    const Texts absent{"Some remote commands are absent in Amplifier"};
    // The file, whether to restore it, what is not answered, the analog block; whether the head is live,
    // whether it has the colours, what is told.
    const std::tuple<std::string, bool, std::string, const char*, bool, bool, Texts> cases[] = {
        {"", true, "", "", true, false, {}},
        {good, true, "", "", true, true, {}},
        {good, false, "", "", true, false, {}},
        {bad, true, "", "", false, false, corrupted},
        {bad, false, "", "", true, false, {}},
        {good, false, analog, "", false, false, absent},
        {good, false, "RDBAND", "", false, false, absent},
        {good, false, "", "1=-1", false, false, {"Overflow"}},
    };
    const std::string path = folder / "set1234.dat";
    const auto init = [&](bool restore) {
        Pump opened(services, {.unit_address = 7, .number = "1234", .model = "C/KU"});
        ControlHead& fresh = opened.head;
        fresh.machine_init(restore);
        fresh.take(
            {.request = {Request::Kind::analog}, .outcome = Reading::Outcome::good, .value = Analog{}});
        fresh.take({.request = {Request::Kind::alarm_state}, .last_try = false});
        EXPECT_EQ(fresh.panel().line(1), std::string(20, ' ')) << "before its band is known";
        opened.hear();
        EXPECT_TRUE(!fresh.started() || fresh.panel().legend(1) == "BAND" || in_shutdown(fresh.state()));
        return std::pair(fresh.life(), fresh.panel().look().fore_colour == 255);
    };
    for (const auto& [file, restore, mute, words, live, restored, boxes] : cases) {
        SCOPED_TRACE(file + mute + words);
        std::filesystem::remove(path);
        if (!file.empty())
            folder.put("set1234.dat", file);
        replies.erase("RDBAND");
        set_analog(words);
        if (!mute.empty())
            set(mute, std::nullopt);
        EXPECT_EQ(init(restore), std::pair(live ? Life::live : Life::failed, restored));
        EXPECT_EQ(person.take_texts(), boxes);
        EXPECT_EQ(std::filesystem::exists(path), !file.empty() && boxes != corrupted);
    }
    EXPECT_EQ(file_bytes(path + ".bad"), bad);
    // Nothing can be renamed to a folder, as in a folder that cannot be written.
    std::filesystem::remove(path + ".bad");
    std::filesystem::create_directory(path + ".bad");
    folder.put("set1234.dat", bad);
    set_analog("");
    EXPECT_EQ(init(true).first, Life::live);
    EXPECT_EQ(person.take_texts(), corrupted);
    control.apply_screen_settings({.fore_colour = 17});
    EXPECT_EQ(control.view().panel.look().fore_colour, 17);
    control.save_screen_settings();
    EXPECT_EQ(file_bytes(path).substr(0, 21), "Color Settings\r\n 17\r\n");
    // What the shutdown covers is not waited for.
    set_shutdown("12,Arc");
    set_analog("1=-1");
    EXPECT_EQ(init(false).first, Life::live);
}

// Catches a box of the same words behind one that waits, of other words that is lost, or without its cause;
// a value that cannot be shown told again and again, or not once more on another screen.
TEST_F(HeadTest, EveryBoxOnceInItsTurn) {
    station.tells = false;
    const auto expect = [&](const std::string& text, const std::string& detail = {}) {
        const auto message = control.take_message().value_or(Message{});
        EXPECT_EQ(message.text, text);
        EXPECT_EQ(message.detail, "JEX Amplifier 1234" + detail);
    };
    for (const int code : {3, 3, 4}) {
        amplifier.faults.refuse_code = code;
        press_hard(0);
    }
    set_analog("3=-11200 6=-1350");
    press({3, 3, 3});
    visit(12);
    EXPECT_EQ(head.panel.line(2), "Eb  0.00kV          ") << "the other values are shown";
    EXPECT_EQ(head.panel.line(3), std::string(20, ' ')) << "and what was so no longer is not";
    set_analog("3=-11200");
    visit(12);
    const std::string negative =
        " comes as a negative number; negative_words=signed in ampdesk.ini accepts it";
    expect("Remote Is Not On");
    expect("Invalid Data");
    expect("Overflow", ": filament current If" + negative);
    expect("Overflow", ": cathode voltage Ek" + negative);
    EXPECT_FALSE(control.take_message());
    press({4});
    visit();
    press({3, 3, 3});
    visit(12);
    expect("Overflow", ": cathode voltage Ek" + negative);
    EXPECT_FALSE(control.take_message());
}

// Catches a key that acts on a panel without a screen, an HV Off that waits for one, for the question whether
// to restore its colours or for another wait, an On-key that acts late, and a head that goes on when it has
// closed.
TEST_F(HeadTest, BeforeAndAfterItsLife) {
    ControlHead fresh(services, {.slot = 2, .unit_address = 8, .number = "77", .model = ""});
    for (const Life life : {Life::created, Life::opening}) {
        EXPECT_EQ(fresh.life(), life);
        fresh.press_key(3);
        fresh.click_lamp(0);
        fresh.tick();
        EXPECT_TRUE(fresh.requests().empty());
        for (std::int16_t key = 0; key < 4; ++key) {
            const Instant at = Instant{} + milliseconds(key + 1);
            fresh.click_lamp(static_cast<std::int16_t>(key + 4), {}, at);
            ASSERT_EQ(fresh.orders().size(), 1U);
            const Order order = std::exchange(fresh.orders(), {})[0];
            EXPECT_EQ(order.command, std::string("\x10") + "\x12\x13\x16\x17"[key]);
            EXPECT_EQ(order.urgent, key % 2 == 1);
            EXPECT_EQ(order.only_fresh, key % 2 == 0);
            EXPECT_EQ(order.made_at, at);
        }
        fresh.machine_init(true);
    }
    control.press_hard_key(1);
    control.close();
    set_shutdown("1,Arc");
    control.take({.request = {Request::Kind::status}, .outcome = Reading::Outcome::good, .value = Status{}});
    Setting refused;
    refused.refusal = "no";
    control.take(control.orders().front(), refused);
    control.orders().clear();
    control.tick();
    press_at_once({3});
    control.press_hard_key(0);
    control.move_scroll_bar(1, ScrollBar{true, 0, 5, 0});
    EXPECT_TRUE(control.orders().empty() && control.requests().empty() && person.beeps.empty());
    EXPECT_FALSE(control.take_message());
    control.machine_init(false);
    EXPECT_TRUE(control.closed());
}

// Catches a key that does what it did not say, and one whose words are another's.
TEST_F(HeadTest, KeysDoWhatTheySaid) {
    const std::pair<std::vector<std::int16_t>, Texts> cases[] = {
        {{4}, {"ATTN", "", "HELP", "MORE"}},
        {{0}, {"Leave", "Leave", "Leave", "Leave"}},
        {{4, 2}, {"Leave", "Leave", "Leave", "Leave"}},  // help without a text
        {{4, 3, 0}, {"", "", "", "MORE"}},
        {{4, 3, 0}, {"Adjust", "Previous page", "Next page", "MORE"}},
        {{4, 3, 1}, {"Line up", "Line down", "Page up", "Page down"}},
    };
    for (const auto& [keys, names] : cases) {
        press(keys);
        for (std::size_t key = 0; key < 4; ++key)
            EXPECT_EQ(control.panel().key_name(static_cast<int>(key)), names[key]) << names[0];
    }
    press({4, 4});
    EXPECT_EQ(control.needs(), k_needs_analog | k_needs_alarm);
    set_shutdown("12,Arc");
    visit(2);
    take_settings();
    const auto press_as = [&](const char* did) {
        person.beeps.clear();
        control.press_key(3, did);
        control.click_lamp(3, did);
        station.serve();
        return person.beeps.size();
    };
    EXPECT_EQ(press_as("MORE"), 2U);
    EXPECT_EQ(take_settings(), Texts{});
    set_status(0);
    station.hear();
    EXPECT_EQ(press_as("OK"), 2U);
    EXPECT_EQ(head.panel.legend(0), "ATTN");
    EXPECT_EQ(press_as("MORE"), 0U);
    EXPECT_EQ(head.panel.legend(0), "WARNI");
}

// Catches a move that was made on the bar of another page, one of many on the way that is sent or takes a key
// with it, and a bar that jumps back under the operator's hand.
TEST_F(HeadTest, MovesAreOfTheBarThatWasSeen) {
    const ScrollBar none = head.panel.scroll();
    press({0});
    ScrollBar seen = head.panel.scroll();
    seen.value = 17;  // where the bar stood then is of no matter
    press({4, 3, 3, 0, 0});
    for (const ScrollBar& older : {none, seen}) control.move_scroll_bar(3, older);
    EXPECT_EQ(head.panel.scroll().value, 5);
    EXPECT_EQ(std::exchange(person.beeps, {}).size(), 2U);
    press({4, 4, 4, 0});
    Setting refused;
    refused.outcome = Setting::Outcome::refused;
    for (const int value : {1, 2, 3}) {
        control.move_scroll_bar(value, seen);
        if (value == 1)
            control.take(std::exchange(control.orders(), {}).front(), refused);
    }
    control.press_hard_key(1);
    control.move_scroll_bar(4, seen);
    station.hear();
    EXPECT_EQ(take_settings(), (Texts{"10 18 03 00", "10 13", "10 18 04 00"}));
    Reading analog{.request = {Request::Kind::analog}, .outcome = Reading::Outcome::good};
    analog.value = Analog{};
    control.move_scroll_bar(5, seen);
    control.take(std::exchange(control.orders(), {}).front(), refused);
    control.move_scroll_bar(6, seen);
    control.take(analog);
    EXPECT_EQ(head.panel.scroll().value, 6);
    control.orders().clear();
    control.take(analog);
    EXPECT_EQ(head.panel.scroll().value, 0);
    move_bar(7);
    control.move_scroll_bar(8);
    control.take(std::exchange(control.orders(), {}).front(), refused);
    EXPECT_EQ(head.panel.scroll().value, 7);
    EXPECT_TRUE(person.beeps.empty());
}

}  // namespace
}  // namespace ampdesk
