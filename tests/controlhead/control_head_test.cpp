// The guard around a head's handlers, and how a window starts.
#include "controlhead/control_head.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

class ControlHeadTest : public Bench, public ::testing::Test {
  protected:
    ControlHeadTest() {
        folder = fs::temp_directory_path() / ("ampdesk-head-" + std::to_string(::getpid()));
        fs::create_directories(folder);
        services.options.folder = folder.string();
        reply_to("RDBAND") = "RDBAND=0";
    }
    ~ControlHeadTest() override { fs::remove_all(folder); }

    void put_settings(const std::string& text) { std::ofstream(folder / "set1234.dat") << text; }
    // Something that happens while the box of a refused band change is open.
    void during_a_box(const std::function<void()>& event) {
        refusal = 4;
        person.on_ask = [&](const Message&) { event(); };
        head.press_key(1);
        person.on_ask = nullptr;
        refusal = 0;
        EXPECT_EQ(person.take_texts(), Texts{"Invalid Data"});
    }

    fs::path folder;
    ControlHead head{services, {.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"}};
};

// Catches a restore without the question, a question at the automatic start, and a wrong box.
TEST_F(ControlHeadTest, MachineInit) {
    const std::string good = "Color Settings\r\n 255\r\n 0\r\n 15\r\n 0\r\n";
    const std::string question = "The settings for this HPA already exist, do you want to restore ? ";
    struct Case {
        const char* what;
        std::string settings;
        bool ask;
        Answer answer;
        std::string mute;
        int forward;
        bool started;
        std::uint32_t colour;
        Texts boxes;
    };
    const std::uint32_t plain = ScreenSettings{}.fore_colour;
    const std::string analog(k_analog_request);
    const Case cases[] = {
        {"no file", "", true, Answer::yes, "", 0, true, plain, {}},
        {"automatic", good, false, Answer::yes, "", 0, true, 255, {}},
        {"asked, yes", good, true, Answer::yes, "", 0, true, 255, {question}},
        {"asked, no", good, true, Answer::no, "", 0, true, plain, {question}},
        {"corrupt",
         "Colour\n",
         false,
         Answer::yes,
         "",
         0,
         false,
         plain,
         {"File set1234.dat or band_set.dat corrupted."}},
        {"corrupt but not wanted", "Colour\n", true, Answer::no, "", 0, true, plain, {question}},
        {"block missing",
         "",
         true,
         Answer::yes,
         analog,
         0,
         false,
         plain,
         {"Some remote commands are absent in Amplifier"}},
        {"band missing",
         "",
         true,
         Answer::yes,
         "RDBAND",
         0,
         false,
         plain,
         {"Some remote commands are absent in Amplifier"}},
        {"other error", "", true, Answer::yes, "", -1, false, plain, {"Overflow"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fs::remove(folder / "set1234.dat");
        if (!c.settings.empty())
            put_settings(c.settings);
        const auto answers = replies;
        set_analog({{1, c.forward}});
        go_mute(c.mute);
        person.answers = {c.answer};
        ControlHead fresh(services, {.slot = 1, .unit_address = 7, .number = "1234", .model = "C/KU"});
        EXPECT_EQ(fresh.machine_init(c.ask), c.started);
        EXPECT_EQ(fresh.panel().look().fore_colour, c.colour);
        EXPECT_EQ(fresh.panel().line(4), c.started ? "ATTN  BAND HELP MORE" : fresh.panel().line(4));
        EXPECT_EQ(person.take_texts(), c.boxes);
        replies = answers;
        person.answers.clear();
    }
}

// Catches settings saved under a name that the next start does not look for.
TEST_F(ControlHeadTest, SavedSettingsAreRestored) {
    ScreenSettings look;
    look.back_colour = 0x123456;
    look.font_size = 13;
    head.apply_screen_settings(look);
    head.save_screen_settings();
    ControlHead next(services, {.slot = 1, .unit_address = 7, .number = "1234", .model = ""});
    EXPECT_TRUE(next.machine_init(false));
    EXPECT_EQ(next.panel().look(), look);
    EXPECT_EQ(next.caption(), "JEX Amplifier 1234");
}

// Catches a handler entered while another runs, a key that is lost, and old or endless keys that
// are played back.
TEST_F(ControlHeadTest, KeysPressedWhileBusy) {
    ASSERT_TRUE(head.machine_init(false));
    struct Case {
        int presses;
        milliseconds wait;
        int screen;
    };
    for (const Case& c : {Case{1, milliseconds(0), 2}, Case{3, milliseconds(1800), 4},
                          Case{3, milliseconds(2001), 1}, Case{11, milliseconds(0), 1}}) {
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
    ASSERT_TRUE(head.machine_init(false));
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
    ASSERT_TRUE(head.machine_init(false));
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
    ASSERT_TRUE(head.machine_init(false));
    set_shutdown("1,Arc");
    int waits = 0;
    person.on_events = [&] {
        if (++waits == 1)
            head.press_key(0);
    };
    head.updateLogic();
    EXPECT_EQ(head.panel().line(4), "ATTN  BAND HELP MORE");
    EXPECT_TRUE(head.state().key_activity) << "the key has run, to no effect in a shutdown";
    head.updateDisplay();
    head.updateLogic();
    EXPECT_EQ(head.panel().line(1), "System Shutdown, #1 ");
}

}  // namespace
}  // namespace ampdesk
