// A bus on a scripted line, on a clock that only the test and its waits move, and an operator: a box that no
// test has asked for is a failure.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "buslink/bus_link.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {

struct BusRig {
    explicit BusRig(const BusOptions& options = {}) : bus(port, clock, options) {
        bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    }
    ~BusRig() { EXPECT_EQ(person.take_texts(), std::vector<std::string>{}); }

    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus;
};

}  // namespace ampdesk
