// The station on its own thread, with simulated amplifiers; the test's thread plays the windows.
#include "station/station_thread.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "demo/demonstration.h"
#include "demo/sim_port.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

constexpr int k_amplifiers = 12;
constexpr int k_steps = 3'000;
constexpr std::chrono::seconds k_patience{30};

// What the windows know, from the notices alone.
class Windows {
  public:
    explicit Windows(Talk& talk) : talk_(talk) {
        talk_.notices.on_first = [this] { news_->wake(); };
    }

    void take_notices() {
        for (const Notice& notice : talk_.notices.take_all())
            if (const auto* head = std::get_if<HeadNotice>(&notice))
                std::visit([this](const auto& one) { see(one); }, *head);
            else
                finished = finished || std::holds_alternative<ProgramNotice>(notice);
    }
    // Until it is so; false when that takes too long.
    template <class Condition>
    bool see_that(Condition condition) {
        const Instant limit = clock_->now() + k_patience;
        for (take_notices(); !condition(); take_notices()) {
            if (clock_->now() >= limit)
                return false;
            news_->wait({}, limit);
        }
        return true;
    }

    std::map<int, HeadView> heads;  // by their numbers; a window goes at once when it is closed here
    long views = 0;
    bool finished = false;

  private:
    void see(const notice::HeadOpened& opened) {
        there_.insert(opened.identity.id);
        heads[opened.identity.id] = opened.view;
    }
    void see(const notice::HeadChanged& changed) {
        ++views;
        EXPECT_TRUE(there_.contains(changed.head)) << "before it has opened, or after it has closed";
        if (heads.contains(changed.head))
            heads[changed.head] = changed.view;
    }
    void see(const notice::HeadClosed& closed) {
        EXPECT_EQ(there_.erase(closed.head), 1U);
        heads.erase(closed.head);
    }
    void see(const notice::LineState&) {}

    Talk& talk_;
    std::set<int> there_;
    const std::unique_ptr<Clock> clock_ = make_system_clock();
    const std::unique_ptr<LineWait> news_ = make_line_wait(*clock_);
};

class StationThreads : public testing::Test {
  protected:
    StationThreads() {
        demo::add_demonstration(bus_, k_amplifiers);
        settings_ = host_.station().settings().subscribe([this](const Setting& setting) {
            if (setting.command == "\x10\x13")
                ++hv_off_sent_;
        });
        files_ = demo::write_demonstration_files(folder_.path(), k_amplifiers);
        for (std::string& name : files_) name = folder_ / name;
    }
    int any_head() {
        const auto& heads = windows_.heads;
        return heads.empty() ? 0 : std::next(heads.begin(), below(heads.size()))->first;
    }
    int below(std::size_t end) { return static_cast<int>((random_() >> 8U) % end); }
    void do_something();

    const ScratchFolder folder_;
    const std::unique_ptr<Clock> clock_ = make_system_clock();
    demo::SimBus bus_{*clock_};
    demo::SimPort port_{bus_, *clock_};
    Talk talk_;
    StationHost host_{talk_,
                      {port_},
                      *clock_,
                      {.heads = {.folder = folder_.path(), .negative_words = NegativeWords::two_complement}}};
    Subscription settings_;
    long hv_off_sent_ = 0;  // the thread's, until it has ended
    const std::unique_ptr<LineWait> wait_ = make_line_wait(*clock_);
    Windows windows_{talk_};
    std::vector<std::string> files_;
    std::minstd_rand random_{1};
};

void StationThreads::do_something() {
    Mailbox<Act>& acts = talk_.acts;
    const int head = any_head();
    const auto key = static_cast<std::int16_t>(below(4));
    const int what = below(8);
    if (what == 0) {
        acts.put(act::OpenFile{files_[static_cast<std::size_t>(below(k_amplifiers))]});
    } else if (what == 1) {
        acts.put_newest("active", act::SetActive{head});
    } else if (what == 2 && below(30) == 0) {
        windows_.heads.erase(head);
        acts.put(act::CloseHead{head});
    } else if (what == 3) {
        acts.put(act::BeginNvram{NvramTransfer::Mode::read, folder_ / "nvram.txt", 1});
        acts.put(act::StartNvram{});
    } else if (what > 3 && head != 0) {
        acts.put(act::PressKey{head, key, windows_.heads[head].panel.key_name(key)});
    }
}

// Faults: a data race between windows and station; a press of HV Off that is lost beside everything else or
// by the closing of its head, or carried out twice; a window that is told of a head before it has opened or
// after it has closed; an end that does not come.
TEST_F(StationThreads, NothingIsLostBetweenThem) {
    long hv_off_pressed = 0;
    StationThread thread(talk_, host_, *wait_);
    talk_.acts.put(act::Start{files_});
    ASSERT_TRUE(windows_.see_that([this] { return windows_.heads.size() == k_amplifiers; }));
    for (int step = 0; step < k_steps; ++step) {
        do_something();
        if (step % 10 == 0 && !windows_.heads.empty()) {
            talk_.acts.put(act::PressHardKey{any_head(), 1, clock_->now()});
            ++hv_off_pressed;
        }
        if (step % 3 == 0)
            windows_.take_notices();
        if (step % 50 == 0)
            windows_.see_that([this, seen = windows_.views] { return windows_.views > seen; });
    }
    talk_.acts.put(act::Finish{});
    EXPECT_TRUE(windows_.see_that([this] { return windows_.finished; }));
    thread.end();
    EXPECT_EQ(hv_off_sent_, hv_off_pressed);
}

// Fault: a program that is told to quit in the middle of opening hangs.
TEST_F(StationThreads, EndsAtAnyTime) {
    for (const std::size_t heads : {0, 1, 5}) {
        Talk talk;
        Windows windows(talk);
        StationHost host(talk, {port_}, *clock_, {.heads = {.folder = folder_.path()}});
        const StationThread thread(talk, host, *wait_);
        talk.acts.put(act::Start{files_});
        EXPECT_TRUE(windows.see_that([&] { return windows.heads.size() >= heads; }));
    }
}

}  // namespace
}  // namespace ampdesk
