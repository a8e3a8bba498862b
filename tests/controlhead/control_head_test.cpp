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

    // Something that happens while the box of a refused band change is open.
    void during_a_box(const std::function<void()>& event) {
        refusal = 4;
        person.on_ask = [&](const Message&) { event(); };
        head.press_key(1);
        person.on_ask = nullptr;
        refusal = 0;
        EXPECT_EQ(person.take_texts(), Texts{"Invalid Data"});
    }

    const ScratchFolder folder;
    ControlHead head{services, {.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"}};
};

// Catches a restore without the question, a question at the automatic start, a wrong box, and a damaged file
// that keeps its panel shut for ever.
TEST_F(ControlHeadTest, MachineInit) {
    const std::string good = "Color Settings\r\n 255\r\n 0\r\n 15\r\n 0\r\n";
    const std::string bad = "Colour\n";
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
        const bool set_aside = !c.started && c.settings == bad;
        EXPECT_EQ(std::filesystem::exists(folder / "set1234.dat"), !c.settings.empty() && !set_aside);
        if (set_aside) {
            EXPECT_EQ(file_bytes(folder / "set1234.dat.bad"), bad);
        }
        EXPECT_TRUE(!c.started || fresh.panel().legend(1) == "BAND");
        EXPECT_EQ(person.take_texts(), *c.box == '\0' ? Texts{} : Texts{c.box});
        replies = answers;
    }
}

// Catches a handler entered while another runs, a key that is lost, and old or endless keys that
// are played back.
TEST_F(ControlHeadTest, KeysPressedWhileBusy) {
    const struct {
        int presses;
        milliseconds wait;
        int screen;
    } cases[] = {{1, 0ms, 2}, {3, 1800ms, 4}, {3, 2001ms, 1}, {11, 0ms, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.presses);
        head.press_key(4);
        during_a_box([&] {
            for (int i = 0; i < c.presses; ++i) head.press_key(3);
            EXPECT_EQ(head.state().menu_ptr, 1);
            EXPECT_TRUE(head.busy() && head.state().key_activity);
            clock.advance(c.wait);
        });
        EXPECT_EQ(head.state().menu_ptr, c.screen);
        EXPECT_FALSE(head.busy());
    }
}

// Catches a drag whose end is lost while its first steps are played back.
TEST_F(ControlHeadTest, ScrollMovesWhileBusy) {
    head.press_key(0);
    refusal = 4;
    person.on_ask = [&](const Message&) {
        refusal = 0;
        for (int value = 101; value <= 120; ++value) head.move_scroll_bar(value);
    };
    take_sent();
    head.move_scroll_bar(100);
    EXPECT_EQ(take_settings(), (Texts{{16, 24, 100, 0}, {16, 24, 120, 0}}));
    EXPECT_EQ(head.panel().scroll().value, 120);
    person.take_texts();
}

// Catches a visit that re-enters a head, or goes on with one that has closed.
TEST_F(ControlHeadTest, VisitsAreSkippedWhileBusyOrClosed) {
    during_a_box([&] {
        take_sent();
        head.updateLogic();
        head.updateDisplay();
        EXPECT_EQ(sent, Texts{});
    });
    head.updateDisplay();
    int changes = 0;
    head.panel().on_change = [&] { ++changes; };
    set_shutdown("1,Arc");
    person.on_events = [&] {
        head.press_hard_key(0);
        head.close();
    };
    take_sent();
    head.updateLogic();
    EXPECT_EQ(take_settings(), Texts{}) << "kept for a window that is gone";
    EXPECT_EQ(changes, 0);
    head.updateLogic();
    head.updateDisplay();
    head.press_key(3);
    EXPECT_EQ(sent, Texts{});
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

// Catches a shutdown that is not seen because the box of a bad value waits for an absent operator, and a
// second box on top of it.
TEST_F(ControlHeadTest, HeadLivesBesideTheBoxOfAFault) {
    const auto visits = [&](int count) {
        for (int i = 0; i < count; ++i) {
            head.updateLogic();
            head.updateDisplay();
        }
    };
    set_analog("1=-1");
    person.on_ask = [&](const Message& box) {
        EXPECT_EQ(box.detail, "JEX Amplifier 1234");
        visits(4);
        set_shutdown("12,Waveguide arc");
        visits(1);
    };
    visits(3);
    EXPECT_EQ(person.take_texts(), Texts{"Overflow"});
    EXPECT_EQ(head.panel().line(1), "System Shutdown, #12");
    visits(1);
    EXPECT_EQ(person.take_texts(), Texts{}) << "what came up behind the box";
}

}  // namespace
}  // namespace ampdesk
