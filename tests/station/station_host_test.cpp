// The station behind its two queues, on one thread: the start, what is sent at a bad moment, and the end.
#include "station/station_host.h"

#include <gtest/gtest.h>

#include "demo/sim_port.h"
#include "platform/text_file.h"
#include "tests/support/manual_line_wait.h"
#include "tests/support/modem_port.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;

struct LosablePort : demo::SimPort {
    using SimPort::SimPort;
    bool is_connected() const override { return is_open() && !lost; }
    void plug(bool in) {
        lost = !in;
        on_connection_change(in);
    }
    bool lost = false;
};

class StationHostTest : public testing::Test {
  protected:
    StationHostTest() {
        for (const int address : {1, 2}) bus_.add({.address = address, .serial = 1000 + address});
        settings_ = host_.station().settings().subscribe([this](const Setting& setting) {
            sent_ +=
                std::to_string(setting.unit_address) + (setting.command == "\x10\x12" ? " on " : " off ");
        });
    }

    void put(Act act) { talk_.acts.put(std::move(act)); }
    // Until nothing more is to be done for that long.
    void run(Duration length) {
        for (const Instant end = clock_.now() + length; clock_.now() < end && !host_.finished();)
            wait_.wait(host_.ports(), std::min(host_.step(), end));
        take();
    }
    void take() {
        for (const Notice& any : talk_.notices.take_all())
            std::visit([this](const auto& part) { hear(part); }, any);
    }
    void hear(const auto& /*of no interest*/) {}
    void hear(const PersonNotice& notice) {
        if (const auto* told = std::get_if<notice::Told>(&notice))
            said_ += told->message.text + "|" + told->message.detail + ";";
        else if (const auto* status = std::get_if<notice::Status>(&notice))
            status_ = status->text;
        else if (!std::holds_alternative<notice::BusyPointer>(notice) &&
                 !std::holds_alternative<notice::Asked>(notice))
            said_ += std::holds_alternative<notice::Beep>(notice) ? "beep;" : "withdrawn;";
    }
    void hear(const HeadNotice& notice) {
        if (const auto* changed = std::get_if<notice::HeadChanged>(&notice))
            changed_ = *changed;
    }
    void hear(const ProgramNotice& /*finished*/) { said_ += "finished"; }
    int open(int address) {
        host_.bus().open_bus_port("COM1:", 9600, 0, 8, 1);
        host_.station().new_amplifier_window(static_cast<std::int16_t>(address),
                                             std::to_string(1000 + address), "KU", false);
        run(1500ms);
        said_.clear();
        return host_.station().open_heads().back()->identity().id;
    }

    const ScratchFolder folder_;
    ManualClock clock_;
    ManualLineWait wait_{clock_};
    demo::SimBus bus_{clock_};
    LosablePort port_{bus_, clock_};
    ModemPort modem_{clock_};
    Talk talk_;
    StationHost host_{talk_, {port_, &modem_}, clock_, {.heads = {.folder = folder_.path()}}};
    Subscription settings_;
    std::string sent_;
    std::string said_;
    std::string status_;
    notice::HeadChanged changed_;
};

// Fault: the terminal takes the amplifiers' port before they have it, a message of the start is lost, or
// amplifiers open though a settings file is none.
TEST_F(StationHostTest, TheStart) {
    folder_.put("com1001.dat", "RS-485\r\nCOM2:\r\n6\r\n1\r\n");
    folder_.put("ampdesk.dat", "ampdesk settings\r\n2\r\n");
    put(act::Start{{"com1001.dat", "none.dat"}, {{.text = "notice"}}});
    run(3s);
    EXPECT_EQ(said_, "Couldn't find file none.dat|;notice|;");
    EXPECT_EQ(host_.station().open_count(), 1);
    EXPECT_TRUE(modem_.opened.empty());
    put(act::CloseAll{});
    folder_.put("ampdesk.dat", "something else");
    put(act::Start{{"com1001.dat"}, {}});
    run(3s);
    EXPECT_TRUE(said_.ends_with("notice|;Invalid file format|ampdesk.dat;")) << said_;
    EXPECT_EQ(host_.station().open_count(), 0);
}

// Fault: HV On for a panel that has been closed switches the amplifier that opened in its place.
TEST_F(StationHostTest, WhatIsMeantForAClosedHeadReachesNoOther) {
    const int first = open(1);
    put(act::CloseHead{first});
    run(10ms);
    const int second = open(2);
    ASSERT_EQ(host_.station().open_heads().at(0)->identity().slot, 1);
    put(act::PressHardKey{first, 0, clock_.now()});
    put(act::PressHardKey{second, 1, clock_.now()});
    put(act::CloseHead{first});
    run(100ms);
    EXPECT_EQ(sent_, "2 off ");
    EXPECT_EQ(host_.station().open_count(), 1);
}

// Fault: the age of a key counts from when the station hears of it, not from when it was pressed.
TEST_F(StationHostTest, AnOnKeyThatIsTooOldIsDropped) {
    const int head = open(1);
    const auto press = [&](std::int16_t key, Duration age) {
        put(act::PressHardKey{head, key, clock_.now() - age});
        put(act::ClickLamp{head, static_cast<std::int16_t>(key + 4), {}, clock_.now() - age});
        run(100ms);
    };
    press(0, 2001ms);
    EXPECT_EQ(said_, "beep;");  // of two that wait the newest counts
    press(1, 60s);
    press(0, 1900ms);
    EXPECT_EQ(sent_, "1 off 1 off 1 on 1 on ");
}

// Fault: an act goes elsewhere or nowhere; a view from before a move of the scroll bar passes for one that
// knows it, and moves the bar back; a move that is not taken leaves the window's bar where it is.
TEST_F(StationHostTest, ActsReachTheirHead) {
    const int head = open(1);
    put(act::MoveScrollBar{head, 5, {true, 0, 300, 0}});  // there is no bar now
    host_.step();
    take();
    EXPECT_EQ(changed_.moves, 1);
    EXPECT_EQ(said_, "beep;");
    put(act::SetLook{head, {.fore_colour = 255}});
    put(act::PressKey{head, 3, "MORE"});
    put(act::SaveHead{head});
    run(1s);
    EXPECT_EQ(changed_.view.panel.look().fore_colour, 255);
    EXPECT_EQ(host_.station().open_heads().at(0)->state().menu_ptr, 2);
    EXPECT_TRUE(file_exists(folder_ / "com1001.dat"));
}

// Fault: nobody says that the line is lost or back, or goes on saying it of one that has been given up; one
// that is back is found when something else is due.
TEST_F(StationHostTest, ALostLineIsTold) {
    open(1);
    const auto expect_status = [&](const char* status) {
        run(10ms);
        EXPECT_EQ(status_, status);
    };
    port_.plug(false);
    expect_status("COM1: connection lost, trying again");
    port_.plug(true);
    expect_status("COM1: connected again");
    put(act::CloseAll{});
    port_.plug(false);
    host_.step();
    EXPECT_LE(host_.step() - clock_.now(), 250ms);
    port_.lost = false;
    host_.bus().open_bus_port("COM3:", 9600, 0, 8, 1);
    expect_status("COM3: connected");
    port_.plug(false);
    host_.step();
    host_.bus().close_bus_port();
    expect_status("COM3: closed");
}

// Fault: HV Off right before the end is lost, or waits for an amplifier that is dead; the end waits for ever
// for keys or output; what could not be kept is told when nobody looks any more; what is sent after the end
// is done.
TEST_F(StationHostTest, TheEnd) {
    folder_.put("ampdesk.dat", "ampdesk settings\r\n4\r\n");
    put(act::Start{});
    const int dead = open(1);
    const int living = open(2);
    bus_.find(1)->line.silent = true;
    modem_.drained = false;
    run(700ms);
    folder_.put("other.dat", "another title\r\n");
    const Instant asked = clock_.now();
    for (const int head : {dead, living}) put(act::PressHardKey{head, 1, asked});
    for (int i = 0; i < 20; ++i) put(act::PressHardKey{dead, 1, asked});
    put(act::Finish{{{folder_ / "layout.dat", {"layout", "main 1 2"}}, {folder_ / "other.dat", {"layout"}}}});
    put(act::Finish{});
    run(10s);
    EXPECT_LE(clock_.now() - asked, 4s);
    EXPECT_TRUE(sent_.starts_with("1 off 2 off 1 off ")) << sent_;
    EXPECT_EQ(said_, "Data cannot be sent|;Invalid file format|" + (folder_ / "other.dat") + ";finished");
    EXPECT_EQ(read_text_lines(folder_ / "layout.dat").at(1), "main 1 2");
    EXPECT_EQ(read_text_lines(folder_ / "other.dat").at(0), "another title");
    EXPECT_EQ(host_.station().open_count(), 0);
    put(act::OpenFile{folder_ / "com1001.dat"});
    host_.step();
    take();
    EXPECT_TRUE(said_.ends_with("finished"));
}

// Fault: an end that has nothing to wait for waits, or leaves keys behind that it could carry out, or a
// question to windows that wait for its answer.
TEST_F(StationHostTest, TheEndWithdrawsQuestions) {
    for (const int head : {open(1), open(2)}) put(act::PressHardKey{head, 1, clock_.now()});
    bus_.find(1)->line.silent = true;
    host_.station().questions().ask({}, [](const Reply&) { ADD_FAILURE(); });
    put(act::Finish{});
    run(1s);
    EXPECT_EQ(said_, "withdrawn;finished");
    EXPECT_EQ(sent_, "1 off 2 off ");
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
