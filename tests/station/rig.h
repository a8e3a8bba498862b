// A station on the simulated bus, on a clock that only waits move, in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "buslink/wire/control_characters.h"
#include "demo/sim_port.h"
#include "station/station.h"
#include "tests/support/manual_clock.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/sent_frame.h"
#include "tests/support/turn.h"

namespace ampdesk {

using namespace std::chrono_literals;

// The simulated port, which can also refuse to open, lose one kind of request and remember when
// which amplifier was asked for its status.
class WatchedPort : public demo::SimPort {
  public:
    WatchedPort(demo::SimBus& bus, Clock& clock) : SimPort(bus, clock), clock_(clock) {}

    PortResult open(const PortSettings& settings) override {
        opened.push_back(settings);
        close();
        return open_result.ok() ? SimPort::open(settings) : open_result;
    }
    PortError write(std::string_view bytes, Instant deadline) override {
        const SentFrame order = sent_frame(bytes);
        if (!order.text)
            requests.emplace_back(order.address, order.command[0]);
        if (order.command == "\x11")
            status_requests[order.address].push_back(clock_.now());
        const bool lost = !lost_request.empty() && bytes.find(lost_request) != std::string_view::npos;
        return lost ? PortError::none : SimPort::write(bytes, deadline);
    }

    std::vector<PortSettings> opened;
    PortResult open_result;
    std::string lost_request;
    std::map<int, std::vector<Instant>> status_requests;
    std::vector<std::pair<int, char>> requests;  // address and first character of the command

  private:
    Clock& clock_;
};

struct Rig {
    // A visit takes about 13 ms unless told.
    explicit Rig(Duration byte_time = 100us) : sim(clock, byte_time) {
        for (int address = 1; address <= 4; ++address)
            sim.add({.address = address, .serial = 1000 + address, .name = "KU"});
        services.options.folder = folder.path();
    }
    using Texts = std::vector<std::string>;

    static std::string file(const std::string& address,
                            const std::string& port = "COM1:", const std::string& baud = "6") {
        return "RS-485\r\n" + port + "\r\n" + baud + "\r\n" + address + "\r\n";
    }
    // Opens the amplifiers with these addresses as the start of the program does.
    void open(const std::vector<int>& addresses) {
        Texts names;
        for (const int address : addresses) {
            names.push_back("com" + std::to_string(1000 + address) + ".dat");
            folder.put(names.back(), file(std::to_string(address)));
        }
        station.auto_open_dat_files(names);
        let_start();
    }
    // Until the files are open and the first screens there.
    void let_start() {
        const auto starting = [this] {
            const auto heads = station.open_heads();
            return std::any_of(heads.begin(), heads.end(), [](const auto& head) { return !head->started(); });
        };
        poll(1ms);
        for (int i = 0; i < 1000 && (station.opening_files() || starting()); ++i) poll(50ms);
    }
    // Sixteen heads that have been polled for a while; returns their addresses.
    std::vector<int> open_sixteen() {
        std::vector<int> all(16);
        std::iota(all.begin(), all.end(), 1);
        for (const int address : all)
            if (sim.find(address) == nullptr)
                sim.add({.address = address, .serial = 1000 + address, .name = "KU"});
        open(all);
        poll(2s);
        return all;
    }
    std::vector<int> open_slots() const {
        std::vector<int> slots;
        for (const auto& head : station.open_heads()) slots.push_back(head->identity().slot);
        return slots;
    }
    // The head that has so many before it, and one.
    ControlHead& head(std::size_t place) { return *station.open_heads().at(place - 1); }
    // The station's turns for that long; questions are answered as was prepared.
    void poll(std::chrono::milliseconds length) {
        const Instant end = clock.now() + length;
        while (clock.now() < end) {
            turn(station, sim, clock, [&] { return end; });
            for (const auto& [number, reply] : person.take_replies()) station.answer(number, reply);
        }
    }
    // The longest time between two status requests to that amplifier, in milliseconds.
    long long longest_gap(int address) {
        const auto& at = port.status_requests[address];
        Duration longest{};
        for (std::size_t i = 1; i < at.size(); ++i) longest = std::max(longest, at[i] - at[i - 1]);
        return at.size() < 2 ? -1 : std::chrono::duration_cast<std::chrono::milliseconds>(longest).count();
    }

    ScratchFolder folder;
    ManualClock clock;
    demo::SimBus sim;
    WatchedPort port{sim, clock};
    RecordingOperator person;
    BusLink bus{port, clock};
    HeadServices services{bus, clock, person, {}};
    Station station{services};
};

class StationTest : public testing::Test, protected Rig {
  protected:
    using Rig::Rig;
    // A box that no test asked for is a failure.
    void TearDown() override { EXPECT_EQ(person.take_texts(), Texts{}); }
};

}  // namespace ampdesk
