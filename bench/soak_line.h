// The soak's serial port: a faulty line between the station and simulated amplifiers. It keeps what
// each amplifier really said and when, as the measure for what the station shows.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "bench/line_faults.h"
#include "demo/sim_bus.h"
#include "platform/serial_port.h"
#include "tests/support/sent_frame.h"

namespace ampdesk::bench {

// Whose request it is.
enum class Speaker { head, remote, nvram };

// One reply as it left the amplifier.
struct Said {
    Instant at;
    std::string command;
    bool accepted = false;  // ACK
    std::string payload;    // without the echo of the command
    LineFault fault = LineFault::none;
    bool alone = false;  // nothing else was on its way to the station
    long number = 0;     // of the exchange
    Speaker speaker = Speaker::head;
};

struct LineRequest : SentFrame {
    Speaker speaker = Speaker::head;
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
    std::optional<Instant> input_due() const override;

    // What the amplifier at that address said during the last half minute, oldest first.
    const std::deque<Said>& said(int address) { return said_[address]; }

    // Called for every request, before the amplifier hears it.
    std::function<void(const LineRequest&)> on_request;

    // Whether that amplifier lately sent a reply to such a command that can have come through: one with
    // the same echo, which is the command's first two bytes.
    bool may_have_answered(int address, std::string_view command);

    // When it last sent an answer to its head that can have come through.
    Instant last_answer(int address) const;

    demo::SimBus& bus() { return bus_; }
    long exchanges = 0;
    Speaker next_speaker = Speaker::head;  // of the next request alone; a guest of the station marks its own

  private:
    void remember(const LineRequest& order, const std::string& reply, LineFault fault);

    Clock& clock_;
    FaultyLine& faults_;
    demo::SimBus bus_{clock_};
    Crc16 crc_;
    bool open_ = false;
    std::multimap<Instant, char> under_way_;
    std::map<int, std::deque<Said>> said_;
    std::map<int, Instant> last_answer_;
};

}  // namespace ampdesk::bench
