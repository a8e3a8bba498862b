// The soak's serial port: a faulty line between the station and simulated amplifiers. It keeps what
// each amplifier really said and when, as the measure for what the station shows.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "bench/line_faults.h"
#include "demo/sim_bus.h"
#include "platform/serial_port.h"

namespace ampdesk::bench {

// One reply as it left the amplifier.
struct Said {
    Instant at;
    std::string command;
    bool accepted = false;  // ACK
    std::string payload;    // without the echo of the command
};

struct Order {
    int address = 0;
    bool text = false;
    std::string command;

    // Changes something in the amplifier.
    bool setting() const { return command.starts_with('\x10') || command.starts_with("SBAND"); }
};

class SoakLine : public SerialPort {
  public:
    SoakLine(Clock& clock, FaultyLine& faults) : clock_(clock), faults_(faults) {}

    PortResult open(const PortSettings&) override;
    void close() override { open_ = false; }
    bool is_open() const override { return open_; }
    bool is_connected() const override { return open_; }
    PortError write(std::string_view bytes, Instant deadline) override;
    std::string read_waiting() override;
    WaitResult wait_readable(Instant deadline) override;

    // What the amplifier at that address said during the last half minute, oldest first.
    const std::deque<Said>& said(int address) { return said_[address]; }

    // Called for every request, before the amplifier hears it.
    std::function<void(const Order&)> on_request;

    demo::SimBus& bus() { return bus_; }
    long exchanges = 0;

  private:
    void remember(const Order& order, const std::string& reply);

    Clock& clock_;
    FaultyLine& faults_;
    demo::SimBus bus_{clock_};
    Crc16 crc_;
    bool open_ = false;
    std::multimap<Instant, char> under_way_;
    std::map<int, std::deque<Said>> said_;
};

}  // namespace ampdesk::bench
