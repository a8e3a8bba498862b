// The guard around a head's handlers, and how a window starts.
#include "controlhead/control_head.h"

#include <filesystem>

#include "tests/controlhead/head_fixture.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using namespace std::chrono_literals;

class ControlHeadTest : public Bench, public ::testing::Test {
  protected:
    ControlHeadTest() {
        services.options.folder = folder.path();
        reply_to("RDBAND") = "RDBAND=0";
        EXPECT_TRUE(head.machine_init(false));
    }

    void visit(int times = 1) {
        for (int i = 0; i < times; ++i) {
            head.updateLogic();
            head.updateDisplay();
        }
    }

    const ScratchFolder folder;
    ControlHead head{services, {.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"}};
};

// Catches a restore without the question, a question at the automatic start, a wrong box, and a damaged file
// that keeps its panel shut for ever.
TEST_F(ControlHeadTest, MachineInit) {
    const std::string good = "Color Settings\r\n 255\r\n 0\r\n 15\r\n 0\r\n";
    const std::string bad = "Color Settings\n 255\n 0\n";
    const std::string analog(k_analog_request);
    const char* question = "The settings for this HPA already exist, do you want to restore ? ";
    const char* absent = "Some remote commands are absent in Amplifier";
    const struct {
        std::string settings;
        bool ask;
        Answer answer;
        std::string mute;
        const char* analog;
        bool started, restored;
        const char* box;
    } cases[] = {
        {"", true, Answer::yes, "", "", true, false, ""},
        {good, false, Answer::yes, "", "", true, true, ""},
        {good, true, Answer::yes, "", "", true, true, question},
        {good, true, Answer::no, "", "", true, false, question},
        {bad, false, Answer::yes, "", "", false, false, "File set1234.dat or band_set.dat corrupted."},
        {bad, true, Answer::no, "", "", true, false, question},
        {"", true, Answer::yes, analog, "", false, false, absent},
        {"", true, Answer::yes, "RDBAND", "", false, false, absent},
        {"", true, Answer::yes, "", "1=-1", false, false, "Overflow"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        std::filesystem::remove(folder / "set1234.dat");
        if (!c.settings.empty())
            folder.put("set1234.dat", c.settings);
        const auto answers = replies;
        set_analog(c.analog);
        go_mute(c.mute);
        person.answers.clear();
        if (c.box == question)
            person.answers = {c.answer};
        ControlHead fresh(services, {.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"});
        EXPECT_EQ(fresh.machine_init(c.ask), c.started);
        EXPECT_EQ(fresh.panel().look().fore_colour == 255, c.restored);
        EXPECT_TRUE(!c.started || fresh.panel().legend(1) == "BAND");
        for (const Message& box : person.messages)
            EXPECT_EQ(box.detail.starts_with("JEX Amplifier 1234"), box.text != question) << box.detail;
        EXPECT_EQ(person.take_texts(), *c.box == '\0' ? Texts{} : Texts{c.box});
        replies = answers;
        const bool set_aside = !c.started && c.settings == bad;
        EXPECT_EQ(std::filesystem::exists(folder / "set1234.dat"), !c.settings.empty() && !set_aside);
        if (set_aside) {
            EXPECT_EQ(file_bytes(folder / "set1234.dat.bad"), bad);
        }
    }
    // Nothing can be renamed to a folder, as in a folder that cannot be written.
    std::filesystem::remove(folder / "set1234.dat.bad");
    std::filesystem::create_directory(folder / "set1234.dat.bad");
    folder.put("set1234.dat", bad);
    ControlHead fresh(services, {.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"});
    EXPECT_TRUE(fresh.machine_init(false));
    EXPECT_EQ(person.take_texts(), Texts{"File set1234.dat or band_set.dat corrupted."});
}

// Catches a box that blinds its own head for as long as it stands: a shutdown that is not seen nor heard,
// an HV Off that is lost; and a second box of the same words behind it.
TEST_F(ControlHeadTest, HeadLivesBesideItsBoxes) {
    services.options.folder = folder.path();
    const struct {
        const char* text;
        const char* detail;
        std::function<void()> bring;
    } cases[] = {
        {"Remote Is Not On", "JEX Amplifier 1234", [&] { head.press_hard_key(0); }},
        {"Remote Is Not On", "JEX Amplifier 1234", [&] { head.press_key(1); }},
        {"Remote Is Not On", "JEX Amplifier 1234",
         [&] {
             head.press_key(0);
             head.move_scroll_bar(100);
         }},
        {"Invalid file format", "JEX Amplifier 1234: mhelp.txt", [&] { head.press_key(2); }},
        {"The amplifier did not answer", "JEX Amplifier 1234",
         [&] {
             head.press_key(3);
             go_mute(k_status_request);
             head.press_key(0);
         }},
        {"Overflow",
         "JEX Amplifier 1234: forward power comes as a negative number; negative_words=signed in ampdesk.ini "
         "accepts it",
         [&] {
             set_analog("1=-1");
             visit(3);
         }},
    };
    const auto answers = replies;
    folder.put("mhelp.txt", "no help\n");
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        head.press_key(4);
        refusal = 3;
        person.on_ask = [&](const Message& box) {
            person.on_ask = nullptr;
            EXPECT_EQ(box.detail, c.detail);
            set_status(0);
            c.bring();
            refusal = 0;
            take_sent();
            head.press_hard_key(1);
            EXPECT_EQ(take_settings(), Texts{"\x10\x13"});
            set_shutdown("12,Waveguide arc");
            visit(2);
            EXPECT_EQ(head.panel().line(1), "System Shutdown, #12");
            EXPECT_EQ(std::exchange(person.beeps, {}).size(), 2U);
        };
        c.bring();
        EXPECT_EQ(person.take_texts(), Texts{c.text});
        replies = answers;
        visit();
    }
}

// Catches a box of other words that is lost behind the one on the screen, and a value that cannot be shown
// told again and again, or never again once it was good for a while.
TEST_F(ControlHeadTest, EveryBoxOnceInItsTurn) {
    refusal = 3;
    person.on_ask = [&](const Message&) {
        person.on_ask = nullptr;
        refusal = 4;
        head.press_hard_key(3);
    };
    head.press_hard_key(0);
    EXPECT_EQ(person.take_texts(), (Texts{"Remote Is Not On", "Invalid Data"}));

    set_analog("3=-11200 6=-1350");
    for (int i = 0; i < 3; ++i) head.press_key(3);
    visit(12);
    EXPECT_EQ(head.panel().line(2), "Eb  0.00kV          ") << "the other values are shown";
    EXPECT_EQ(head.panel().line(3), std::string(20, ' ')) << "and what was so no longer is not";
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].text, "Overflow");
    EXPECT_NE(person.messages[0].detail.find("filament current If"), std::string::npos);
    set_analog("3=-11200");
    visit(12);
    head.press_key(4);
    visit();
    for (int i = 0; i < 3; ++i) head.press_key(3);
    visit(12);
    EXPECT_EQ(person.take_texts(), Texts(3, "Overflow")) << "the next item, and after another screen";
}

// Catches a visit that goes on with a head that has closed, or meddles with one that has no screen yet, and
// an HV Off that waits for the question whether to restore its colours.
TEST_F(ControlHeadTest, BeforeAndAfterItsLife) {
    ControlHead fresh(services, {.slot = 2, .unit_address = 8, .number = "77", .model = ""});
    folder.put("set77.dat", "Color Settings\r\n 0\r\n 0\r\n 15\r\n 0\r\n");
    person.on_ask = [&](const Message&) {
        take_sent();
        fresh.press_key(0);
        fresh.click_lamp(0);
        fresh.updateLogic();
        fresh.updateDisplay();
        EXPECT_EQ(sent, Texts{});
        fresh.press_hard_key(1);
        EXPECT_EQ(take_settings(), Texts{"\x10\x13"});
    };
    EXPECT_TRUE(fresh.machine_init(true));
    person.on_ask = nullptr;
    person.take_texts();

    int changes = 0;
    head.panel().on_change = [&] { ++changes; };
    set_shutdown("1,Arc");
    person.on_events = [&] { head.close(); };
    head.updateLogic();
    take_sent();
    visit();
    head.press_key(3);
    head.press_hard_key(0);
    EXPECT_EQ(sent, Texts{});
    EXPECT_EQ(changes, 0);
    EXPECT_FALSE(head.machine_init(false));
}

// Catches a shutdown display painted over what the operator is doing, and a key that is lost there.
TEST_F(ControlHeadTest, KeyDuringTheShortWaitOfAShutdown) {
    set_shutdown("1,Arc");
    person.on_events = [&] {
        person.on_events = nullptr;
        head.press_key(0);
    };
    head.updateLogic();
    EXPECT_EQ(head.panel().line(4), "ATTN  BAND HELP MORE");
    EXPECT_TRUE(head.state().key_activity) << "the key has run, to no effect in a shutdown";
    head.updateDisplay();
    head.updateLogic();
    EXPECT_EQ(head.panel().line(1), "System Shutdown, #1 ");
}

// Catches a shutdown that waits for a dialog which was opened by what the head let run before showing it.
TEST_F(ControlHeadTest, DialogBeforeAShutdownHoldsNothingUp) {
    set_shutdown("12,Arc");
    person.on_events = [&] {
        person.on_events = nullptr;
        visit(3);
        EXPECT_EQ(head.panel().line(1), "System Shutdown, #12");
    };
    visit();
    EXPECT_EQ(count_sent(k_shutdown_request), 1U);
}

}  // namespace
}  // namespace ampdesk
