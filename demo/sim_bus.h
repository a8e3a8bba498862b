// The bus that the simulated amplifiers hang on: the station's bytes in, the amplifiers' bytes out,
// each with the instant from which it can be read.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "buslink/wire/crc16.h"
#include "demo/request_finder.h"
#include "demo/sim_amplifier.h"
#include "platform/clock.h"

namespace ampdesk::demo {

class SimBus {
  public:
    // `byte_time` is how long one byte of a reply takes; with 0 a reply is there at once. A command is
    // always heard at once, unless pace_commands says otherwise.
    explicit SimBus(const Clock& clock, Duration byte_time = {}, CrcParameters crc = {});
    SimBus(const SimBus&) = delete;
    SimBus& operator=(const SimBus&) = delete;

    // Hangs one more amplifier on the bus. Its address must be free.
    SimAmplifier& add(const SimModel& model);

    // From now on a command's bytes take their time, too, and the reply begins that long after the last
    // of them. What the command says is carried out, and what it reads is read, at its first byte.
    void pace_commands(Duration turn_around);

    // Null when no amplifier has that address.
    SimAmplifier* find(int address) const;
    const std::vector<std::unique_ptr<SimAmplifier>>& amplifiers() const { return amplifiers_; }

    // Bytes from the station, cut anywhere. Whole sound frames are carried out at once by the
    // amplifier they address; everything else is left unanswered.
    void receive(std::string_view bytes);

    // When the next byte can be read; nothing when none is under way.
    std::optional<Instant> next_due() const;

    // All bytes that can be read by now.
    std::string take_due();

    // Forgets what is under way.
    void drop_pending() { pending_.clear(); }

  private:
    void carry_out(SimAmplifier& amplifier, const Request& request);
    void send(LineFaults& faults, const std::string& bytes);
    std::string stray_bytes(bool text);

    const Clock& clock_;
    Duration byte_time_;
    Duration command_byte_time_{};
    Duration turn_around_{};
    Instant heard_;  // when the reply to what came in last may begin
    Crc16 crc_;
    RequestFinder finder_;
    std::minstd_rand random_;
    std::vector<std::unique_ptr<SimAmplifier>> amplifiers_;
    std::multimap<Instant, std::string> pending_;
    Instant line_free_;  // when the reply that is going out has ended
};

}  // namespace ampdesk::demo
