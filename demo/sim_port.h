// The demonstration's serial port: what the station writes goes to a simulated bus of this process.
#pragma once

#include "demo/sim_bus.h"
#include "platform/serial_port.h"

namespace ampdesk::demo {

class SimPort : public SerialPort {
  public:
    // Both must outlive the port.
    SimPort(SimBus& bus, Clock& clock) : bus_(bus), clock_(clock) {}

    // Every device name and all settings will do; it never fails.
    PortResult open(const PortSettings& settings) override;
    void close() override;
    bool is_open() const override { return open_; }
    bool is_connected() const override { return open_; }

    // All fail on a closed port, and nothing else.
    PortError write(std::string_view bytes, Instant deadline) override;
    std::string read_waiting() override;
    WaitResult wait_readable(Instant deadline) override;
    std::optional<Instant> input_due() const override;

  private:
    SimBus& bus_;
    Clock& clock_;
    bool open_ = false;
};

}  // namespace ampdesk::demo
