// A head behind a line on which every reply is hit by the same fault, of an amplifier whose values
// change with every request: the panel never shows what the amplifier has not held.
#include <algorithm>
#include <array>

#include "controlhead/menu_engine.h"
#include "tests/controlhead/head_fixture.h"
#include "tests/support/line_faults.h"

namespace ampdesk {
namespace {

using Lines = std::array<std::string, 4>;

const Lines k_error_screen = {"RS485 Communication ", "Error,              ", "Check Connection    ",
                              "                    "};
constexpr int k_most_values = 100;

struct FaultyHead : Bench {
    FaultyHead(std::int16_t screen, bool checked)
        : Bench({.crc = {},
                 .reply_address = checked ? ReplyAddress::checked : ReplyAddress::ignored,
                 .ports = {}}) {
        port.responder = [this, truth = port.responder](const std::string& frame) {
            hold(std::min(held + (fault != nullptr ? 1 : 0), k_most_values - 1));
            const ScriptedPort::Answer answer = truth(frame);
            const bool hit = fault != nullptr && frame.find(hit_request) != std::string::npos;
            return hit ? fault->line(frame, answer.at(0).bytes) : answer;
        };
        hold(0);
        station.start();
        head.menu_ptr = screen;
        set_menu(head);
        station.hear();
    }

    // Each value of a status screen is another one for every n.
    void hold(int n) {
        held = n;
        const std::string step = std::to_string(n);
        constexpr std::pair<int, int> k_first[] = {{1, 400},   {2, 200},  {3, 9000}, {4, 60},
                                                   {5, 6000},  {6, 1500}, {8, 0},    {9, 5},
                                                   {10, 1000}, {11, 500}, {15, 4000}};
        std::string words;
        for (const auto& [item, value] : k_first)
            words += std::to_string(item) + "=" + std::to_string(value + n * 10) + " ";
        set_analog(words);
        set_status(k_hv_on);
        set_alarm("0,Standby " + step);
    }

    Lines lines() const {
        Lines all;
        for (int i = 0; i < 4; ++i) {
            std::string& line = all[static_cast<std::size_t>(i)] = head.panel.line(i + 1);
            std::replace_if(
                line.begin(), line.end(), [](char c) { return c == '<' || c == '>'; }, ' ');
            line.resize(std::max<std::size_t>(line.find_last_not_of(' ') + 1, Panel::k_columns), ' ');
        }
        return all;
    }

    Pump station{services, {.slot = 1, .unit_address = 1, .number = "1234", .model = ""}};
    Head& head = station.inside();
    int held = 0;
    const LineFault* fault = nullptr;
    std::string_view hit_request;  // whose replies the fault hits; empty for all
};

// What that status screen shows of the n-th values.
Lines truth_of(std::int16_t screen, int n) {
    static std::map<std::pair<int, int>, Lines> told;
    static FaultyHead teller(1, false);
    const auto [lines, is_new] = told.try_emplace({screen, n});
    if (is_new) {
        teller.hold(n);
        teller.head.menu_ptr = screen;
        set_menu(teller.head);
        teller.station.hear();
        lines->second = teller.lines();
    }
    return lines->second;
}

class FaultyLine : public testing::TestWithParam<LineFault> {
  protected:
    // Each line shows a value that was held since the one that it showed last, or none; or all show the
    // error.
    void look(const FaultyHead& faulty, std::int16_t screen) {
        const Lines shown = faulty.lines();
        for (int lamp = 1; lamp <= 8; ++lamp) {
            const LampColour colour = faulty.head.panel.lamp(lamp);
            EXPECT_TRUE(colour == LampColour::dark || lamp == 5 || lamp == 6) << lamp;
        }
        if (shown == k_error_screen)
            return;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            if (shown[i] == std::string(Panel::k_columns, ' '))
                continue;
            int& since = since_[i];
            const int last = since;
            while (since <= faulty.held && truth_of(screen, since)[i] != shown[i]) ++since;
            EXPECT_LE(since, faulty.held) << shown[i] << " was not held after " << truth_of(screen, last)[i];
        }
    }
    std::array<int, 4> since_{};
};

// Catches a value of another request, another amplifier or of noise on the panel, one that goes back in
// time, a panel half error and half values, a setting that nobody asked for, and a panel that does not
// recover.
TEST_P(FaultyLine, ShowsWhatTheAmplifierHoldsOrTheErrorScreen) {
    // Where addresses are not checked nothing on the line tells two amplifiers apart.
    const bool checked = GetParam().result == LineFault::Result::anothers;
    for (int way = 0; way < 3 * 4; ++way) {
        const auto screen = static_cast<std::int16_t>(1 + way / 3);
        FaultyHead faulty(screen, checked);
        faulty.hit_request = std::array{std::string_view(), k_analog_request, k_alarm_request}.at(
            static_cast<std::size_t>(way % 3));
        SCOPED_TRACE("screen " + std::to_string(screen) + ", way " + std::to_string(way));
        since_ = {};
        faulty.fault = &GetParam();
        for (int i = 0; i < 6; ++i) {
            faulty.station.visit();
            look(faulty, screen);
        }
        faulty.fault = nullptr;
        faulty.hold(faulty.held + 1);
        faulty.station.visit();
        look(faulty, screen);
        faulty.station.visit();
        EXPECT_EQ(faulty.lines(), truth_of(screen, faulty.held));
        EXPECT_EQ(faulty.head.panel.lamp(5), LampColour::red);
        EXPECT_EQ(faulty.take_settings(), Texts{});
        EXPECT_EQ(faulty.person.take_texts(), Texts{});
    }
}

// The amplifier itself says something else there, which is shown as it is.
std::vector<LineFault> of_the_line() {
    std::vector<LineFault> faults = binary_faults();
    std::erase_if(faults, [](const LineFault& fault) { return fault.name == "XonXoffAndFFInTheData"; });
    return faults;
}

INSTANTIATE_TEST_SUITE_P(Head, FaultyLine, testing::ValuesIn(of_the_line()),
                         name_of_fault<testing::TestParamInfo<LineFault>>);

}  // namespace
}  // namespace ampdesk
