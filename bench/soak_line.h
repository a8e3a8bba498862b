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
    bool heard = false;     // it can have come through
    bool sound = false;     // the station has to take it for the reply
    Instant arrived{};      // its last byte; of a sound one
    long number = 0;        // of the exchange
    Speaker speaker = Speaker::head;
};

inline constexpr std::string_view k_event_request = "\xA0\x1A";  // the entry's number follows

struct LineRequest : SentFrame {
    Speaker speaker = Speaker::head;

    // A head's question that every amplifier has an answer to: past the end of its event log it is silent.
    bool read() const {
        return speaker == Speaker::head && !setting() && !command.starts_with(k_event_request);
    }
};

// One request as it went out, and what became of it.
struct Exchange {
    Instant at;
    LineRequest order;
    bool sound = false;      // its reply has to be taken
    bool accepted = false;   // … and is no NAK
    bool answered = false;   // or can have come through
    bool silence = false;    // nothing came in
    Duration lost_before{};  // that all before it have lost

    // A head's question of any kind.
    bool asked_by_head() const { return order.speaker == Speaker::head && !order.setting(); }
    bool reads_band_of(int address) const;

    // What it and all before it have lost by then.
    Duration lost_until(Instant instant) const;
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

    // What the amplifier at that address said during the last minute, oldest first.
    const std::deque<Said>& said(int address) { return said_[address]; }

    // What went out during the last minutes, oldest first.
    const std::deque<Exchange>& log() const { return log_; }

    // How much of the time since then the line spent on exchanges that came to nothing: no reply or a spoilt
    // one, up to the next request.
    Duration lost(Instant since) const;

    // The same, and what else it carried while that amplifier left its head's reads unanswered: until then it
    // is asked for its status alone.
    Duration lost_or_failing(Instant since, int address) const;

    // Called for every request, before the amplifier hears it.
    std::function<void(const LineRequest&)> on_request;

    // Whether the station knows a reply of that amplifier by its address.
    std::function<bool(int address)> is_known;

    // Whether that amplifier lately sent a reply to such a command that can have come through: one with
    // the same echo, which is the command's first two bytes.
    bool may_have_answered(int address, std::string_view command);

    // When it last sent an answer to its head that can have come through.
    Instant last_answer(int address) const;

    // So many replies of it in a row have been whole, and not taken for the byte that names it alone.
    int passed_over(int address) const;

    // The line has not been left quiet behind the last read, which nobody has answered: its reply may be
    // late.
    bool is_too_soon() const;

    // Of the last replies to its RDBAND more than one named that band, whoever sent them, or was spoilt: a
    // text carries no address, and hardly a check. One alone must not change a label.
    bool may_mistake_band(int address, char band) const;

    // So many reads of its band have been spoilt since then.
    int spoilt_bands(int address, Instant since) const;

    demo::SimBus& bus() { return bus_; }
    long exchanges = 0;
    long forgeries = 0;                    // garbled replies with a good CRC
    Speaker next_speaker = Speaker::head;  // of the next request alone; a guest of the station marks its own

  private:
    void note_band();
    void look_for_forgery();
    std::string stray_reply(Stray stray, const LineRequest& order);
    bool sends_its_address(int address) const;
    void carry(std::string_view bytes, const LineRequest& order);
    Instant carry_stray(Stray stray, std::string_view bytes, const LineRequest& order);
    Instant carry_reply(const std::string& reply, const LineRequest& understood, bool clear, Instant from);
    void remember(const LineRequest& order, const std::string& reply, LineFault fault, Instant arrived);
    Instant put(std::string_view bytes, Instant from);

    Clock& clock_;
    FaultyLine& faults_;
    demo::SimBus bus_{clock_};
    Crc16 crc_;
    bool open_ = false;
    std::multimap<Instant, char> under_way_;
    std::map<int, std::deque<Said>> said_;
    std::map<int, Instant> last_answer_;
    std::map<int, int> passed_over_;
    std::map<int, std::string> bands_heard_;
    long forged_in_ = 0;              // the last exchange that has brought one
    std::string came_in_;             // since the last request
    Instant first_in_{}, last_in_{};  // … its first byte and its last
    std::deque<Exchange> log_;
};

}  // namespace ampdesk::bench
