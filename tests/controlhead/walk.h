// A walk over the panel: keys in and rows out, on a simulated amplifier over real frames.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <span>
#include <sstream>

#include "demo/faults.h"
#include "demo/sim_port.h"
#include "tests/controlhead/pump.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"
#include "tests/support/recording_operator.h"
#include "tests/support/sent_frame.h"

namespace ampdesk {

using Texts = std::vector<std::string>;

struct Step {
    // "key" and soft keys, "hard" and hard keys, "bar" and a value, "visit", "box" and the text that must
    // have been shown, or a fault of the simulator; ";" between several.
    std::string actions;
    std::string rows{};    // of the display, joined by bars; empty: nothing has changed
    std::string beside{};  // the scroll bar while it is shown, value/maximum; "*" lamp 1 is lit, "!" lamp 4
};

class Walk : public testing::Test {
  protected:
    void start(const demo::SimModel& model) {
        sim.add(model);
        bus.open_bus_port("COM1:", 9600, 0, 8, 1);
        bus.on_traffic = [this](const BusTraffic& traffic) {
            const SentFrame order = traffic.sent ? sent_frame(traffic.bytes) : SentFrame{};
            if (order.setting())
                settings.push_back(order.command[0] == 16 ? to_hex(order.command) : order.command);
        };
        services.options.folder = "/nowhere";
        services.options.shipped_folder = TEST_DATA "/../../data";
        services.options.negative_words =
            (model.signed_words) ? NegativeWords::two_complement : NegativeWords::overflow;
        station.emplace(services, HeadIdentity{.slot = 1,
                                               .unit_address = static_cast<std::int16_t>(model.address),
                                               .number = "1234",
                                               .model = model.name});
        head = &station->head;
        station->start();
        ASSERT_TRUE(head->started());
    }

    std::string shown() {
        const Panel& panel = head->panel();
        std::string all;
        for (const int line : {1, 2, 3, 4}) all += panel.line(line) + "|";
        const ScrollBar& bar = panel.scroll();
        if (bar.visible)
            all += std::to_string(bar.value) + "/" + std::to_string(bar.maximum);
        return all + (panel.lamp(1) == LampColour::yellow ? "*" : "") +
               (panel.lamp(4) == LampColour::yellow ? "!" : "");
    }

    void carry_out(const std::string& actions) {
        std::istringstream all(actions);
        for (std::string action; std::getline(all, action, ';');) carry_out_one(action);
    }
    void carry_out_one(const std::string& action) {
        std::istringstream words(action);
        std::string what;
        words >> what;
        if (what == "visit") {
            station->visit();
        } else if (what == "key") {
            for (std::int16_t key = 0; words >> key; station->serve())
                head->press_key(key, key_name(head->state(), key));
        } else if (what == "hard") {
            for (std::int16_t key = 0; words >> key; station->serve()) head->press_hard_key(key);
        } else if (what == "box") {
            EXPECT_EQ(person.take_texts(), Texts{action.substr(action.find("box") + 4)});
        } else if (int value = 0; what == "bar" && words >> value) {
            head->move_scroll_bar(value, head->panel().scroll());
            station->serve();
        } else {
            ASSERT_EQ(demo::make_fault(sim, action).text, "ok");
        }
    }

    void walk(std::span<const Step> steps) {
        std::string rows;
        std::string beside;
        for (const Step& step : steps) {
            SCOPED_TRACE("step " + std::to_string(&step - steps.data() + 1) + ": " + step.actions);
            carry_out(step.actions);
            if (!step.rows.empty()) {
                rows = step.rows;
                beside = step.beside;
            }
            ASSERT_EQ(shown(), rows + "|" + beside);
        }
        EXPECT_EQ(person.take_texts(), Texts{});
    }

    ManualClock clock;
    demo::SimBus sim{clock};
    demo::SimPort port{sim, clock};
    RecordingOperator person;
    BusLink bus{port, clock};
    HeadServices services{bus, clock, person, {}};
    std::optional<Pump> station;
    ControlHead* head = nullptr;  // of the station
    Texts settings;               // that were sent: words as they are, bytes in hexadecimal
};

}  // namespace ampdesk
