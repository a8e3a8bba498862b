// The station by way of its two queues, on one thread: what is sent at a bad moment, and the end.
#include "station/station_host.h"

#include <gtest/gtest.h>

#include "demo/sim_port.h"
#include "platform/text_file.h"
#include "tests/support/manual_clock.h"
#include "tests/support/manual_line_wait.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

class StationHostTest : public testing::Test {
  protected:
    StationHostTest() {
        for (const int address : {1, 2}) bus_.add({.address = address, .serial = 1000 + address});
        settings_ = host_.station().settings().subscribe([this](const Setting& setting) {
            sent_ +=
                std::to_string(setting.unit_address) + (setting.command == "\x10\x12" ? " on " : " off ");
        });
    }

    // Until nothing more is to be done for that long.
    void run(milliseconds length) {
        for (const Instant end = clock_.now() + length; clock_.now() < end && !host_.finished();)
            wait_.wait(host_.ports(), std::min(host_.step(), end));
        take();
    }
    void take() {
        for (const Notice& notice : talk_.notices.take_all()) {
            if (const auto* person = std::get_if<PersonNotice>(&notice)) {
                if (const auto* told = std::get_if<notice::Told>(person))
                    said_ += told->message.text + "|" + told->message.detail + ";";
                if (std::holds_alternative<notice::Beep>(*person))
                    said_ += "beep;";
                if (std::holds_alternative<notice::QuestionWithdrawn>(*person))
                    said_ += "withdrawn;";
            }
            if (const auto* head = std::get_if<HeadNotice>(&notice)) {
                if (const auto* opened = std::get_if<notice::HeadOpened>(head))
                    heads_.push_back(opened->identity.id);
                if (const auto* changed = std::get_if<notice::HeadChanged>(head))
                    changed_ = *changed;
            }
            if (std::holds_alternative<ProgramNotice>(notice))
                said_ += "finished";
        }
    }
    int open(int address) {
        host_.bus().open_bus_port("COM1:", 9600, 0, 8, 1);
        host_.station().new_amplifier_window(static_cast<std::int16_t>(address),
                                             std::to_string(1000 + address), "KU", false);
        run(milliseconds(1500));
        said_.clear();
        return heads_.back();
    }

    const ScratchFolder folder_;
    ManualClock clock_;
    ManualLineWait wait_{clock_};
    demo::SimBus bus_{clock_};
    demo::SimPort port_{bus_, clock_};
    Talk talk_;
    StationHost host_{talk_, {port_}, clock_, {.heads = {.folder = folder_.path()}}};
    Subscription settings_;
    std::string sent_;
    std::string said_;
    std::vector<int> heads_;
    notice::HeadChanged changed_;
};

// Fault: HV On for a panel that has been closed switches the amplifier that opened in its place.
TEST_F(StationHostTest, WhatIsMeantForAClosedHeadReachesNoOther) {
    const int first = open(1);
    talk_.acts.put(act::CloseHead{first});
    run(milliseconds(10));
    const int second = open(2);
    ASSERT_EQ(host_.station().open_heads().at(0)->identity().slot, 1);
    talk_.acts.put(act::PressHardKey{first, 0, clock_.now()});
    talk_.acts.put(act::PressHardKey{second, 1, clock_.now()});
    talk_.acts.put(act::CloseHead{first});
    run(milliseconds(100));
    EXPECT_EQ(sent_, "2 off ");
    EXPECT_EQ(host_.station().open_count(), 1);
}

// Fault: the age of a key counts from when the station hears of it, not from when it was pressed.
TEST_F(StationHostTest, AnOnKeyThatIsTooOldIsDropped) {
    const int head = open(1);
    const auto press = [&](std::int16_t key, milliseconds age) {
        talk_.acts.put(act::PressHardKey{head, key, clock_.now() - age});
        talk_.acts.put(act::ClickLamp{head, static_cast<std::int16_t>(key + 4), {}, clock_.now() - age});
    };
    press(0, milliseconds(2001));
    press(1, milliseconds(60'000));
    run(milliseconds(100));
    EXPECT_EQ(sent_, "1 off 1 off ");
    EXPECT_EQ(said_, "beep;");  // of two that wait the newest counts
    press(0, milliseconds(1900));
    run(milliseconds(100));
    EXPECT_EQ(sent_, "1 off 1 off 1 on 1 on ");
}

// Fault: a view from before a move of the scroll bar passes for one that knows it, and moves the bar back; a
// move that is not taken leaves the window's bar where it is.
TEST_F(StationHostTest, EveryMoveOfTheScrollBarIsAnswered) {
    const int head = open(1);
    EXPECT_EQ(changed_.moves, 0);
    talk_.acts.put(act::MoveScrollBar{head, 5, {true, 0, 300, 0}});  // there is no bar now
    host_.step();
    take();
    EXPECT_EQ(changed_.moves, 1);
    EXPECT_EQ(said_, "beep;");
}

// Fault: HV Off right before the end is lost, or waits for an amplifier that is dead; what could not be kept
// is told when nobody looks any more; what is sent after the end is done.
TEST_F(StationHostTest, TheEnd) {
    const int dead = open(1);
    const int living = open(2);
    bus_.find(1)->line.silent = true;
    run(milliseconds(700));
    folder_.put("other.dat", "another title\r\n");
    const Instant asked = clock_.now();
    for (const int head : {dead, living}) talk_.acts.put(act::PressHardKey{head, 1, asked});
    talk_.acts.put(
        act::Finish{{{folder_ / "layout.dat", {"layout", "main 1 2"}}, {folder_ / "other.dat", {"layout"}}}});
    talk_.acts.put(act::Finish{});
    run(milliseconds(10'000));
    EXPECT_LE(clock_.now() - asked, std::chrono::seconds(4));
    EXPECT_EQ(sent_, "1 off 2 off ");
    EXPECT_EQ(said_, "Invalid file format|" + (folder_ / "other.dat") + ";finished");
    EXPECT_EQ(read_text_lines(folder_ / "layout.dat").at(1), "main 1 2");
    EXPECT_EQ(read_text_lines(folder_ / "other.dat").at(0), "another title");
    EXPECT_EQ(host_.station().open_count(), 0);
    talk_.acts.put(act::OpenFile{folder_ / "com1001.dat"});
    host_.step();
    take();
    EXPECT_TRUE(said_.ends_with("finished"));
}

// Fault: a question that stands at the end is never taken back, so that the windows wait for its answer.
TEST_F(StationHostTest, TheEndWithdrawsQuestions) {
    bool answered = false;
    const int number = host_.station().questions().ask({}, [&](const Reply&) { answered = true; });
    talk_.acts.put(act::Finish{});
    talk_.acts.put(act::AnswerQuestion{number + 1, {}});
    run(milliseconds(100));
    EXPECT_EQ(said_, "withdrawn;finished");
    EXPECT_FALSE(answered);
}

// Fault: the file that a name was being chosen for when the panel closed is not written, without a word.
TEST_F(StationHostTest, SavesAsForAPanelThatHasClosed) {
    talk_.acts.put(act::CloseHead{open(2)});
    talk_.acts.put(act::SaveAs{2, folder_ / "copy.dat"});
    run(milliseconds(10));
    EXPECT_EQ(read_text_lines(folder_ / "copy.dat").at(3), "2");
}

// Fault: a message that is told again and again while a window is held up fills the queue.
TEST_F(StationHostTest, EqualMessagesWaitOnce) {
    for (int i = 0; i < 3; ++i) {
        host_.services().person.notify("one", "of it");
        host_.services().person.notify("one", "of another");
    }
    take();
    EXPECT_EQ(said_, "one|of it;one|of another;");
}

}  // namespace
}  // namespace ampdesk
