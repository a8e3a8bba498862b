// The exchange with the amplifiers: one command out, one reply back, with a limit in time. Everybody
// who speaks to an amplifier does it through one object of this class. An exchange is begun, fed and ended:
// nobody has to wait within it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "buslink/line_settings.h"
#include "buslink/reply_addresses.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/crc16.h"
#include "buslink/wire/text_frame.h"
#include "platform/clock.h"
#include "platform/serial_port.h"

namespace ampdesk {

struct BusOptions {
    CrcParameters crc;
    ReplyAddress reply_address = ReplyAddress::learned;
    PortMap ports;
};

// What a traffic view is told: every stretch of bytes that went out or came in.
struct BusTraffic {
    bool sent = false;
    int address = 0;  // of the amplifier spoken to
    std::string_view bytes;
};

// How a command goes over the line.
enum class CommandForm {
    binary,     // a frame with a CRC, answered by another one
    text,       // a text frame, answered by a line of text
    text_only,  // a text frame whose answer nobody waits for
};

struct BusCommand {
    std::int16_t address = 0;
    std::string command{};
    CommandForm form = CommandForm::binary;
    Duration limit = std::chrono::seconds(1);  // for a binary reply, from the sending; a text has its own
    Duration rest{};                           // the line is left alone for that long after the end
};

// Why an exchange has no reply.
enum class BusFailure {
    none,
    not_sent,  // no frame holds the command, the port is closed or lost, or it took no output
    silence,
    bad_crc,  // the reply came spoilt
    cut,      // nobody waited any longer
};

struct BusReply {
    BusFailure failure = BusFailure::none;
    // The whole reply frame, ACK or NAK, of L + 5 bytes, or the text up to and including its first CR. Empty
    // on any failure, and for a text that nobody waits for.
    std::string bytes{};
    std::string frame{};  // that went out; empty when no frame holds the command
    Duration took{};      // from the sending to the whole reply
};

class BusLink {
  public:
    static constexpr std::chrono::milliseconds k_reply_limit{1000};

    BusLink(SerialPort& port, Clock& clock, BusOptions options = {});

    // Begins an exchange; none may be under way. After one that failed it first waits until the line is at
    // rest, so that a late answer is never taken for the next one.
    void begin(BusCommand command);
    bool under_way() const { return stage_ != Stage::none || kept_; }

    // Takes what has come and does what is due, without waiting. The reply when the exchange has just ended.
    // What comes of none is thrown away: left on the line, it would wake whoever watches it for ever.
    std::optional<BusReply> poll();

    // When poll() has something to do though nothing comes in; any instant while none is under way.
    Instant due() const { return due_; }

    // Since when a reply is waited for; nothing while none is.
    std::optional<Instant> waiting_since() const {
        return stage_ == Stage::waiting ? std::optional(sent_at_) : std::nullopt;
    }

    // Ends the exchange by the next poll(); what still comes of it is thrown away before the next one. Not
    // before it has been sent, and not during its rest.
    void cut();

    // An exchange from its beginning to its end. What is under way comes to its end first; its reply waits
    // for poll(). Blocks.
    BusReply carry_out(BusCommand command);

    // Sends one binary frame and waits for its reply, at most `limit` from the sending. Returns
    // L + 5 with the whole reply, ACK or NAK; 0 with an empty reply on any failure. Callers treat
    // a result below 6 as no usable reply. Blocks; runs no window events.
    std::int16_t bus_command(std::int16_t address, std::string_view command, std::string& reply,
                             Duration limit = k_reply_limit);

    // Sends one text frame, and once more when the first gets no answer within
    // text_reply_timeout. Returns 0 with the characters up to and including the first CR, 1 with
    // an empty reply on time-out.
    std::int16_t text_command(std::int16_t address, std::string_view command, std::string& reply);

    // Closes the bus port when it is open and opens it anew. Returns 0 for success; on failure the
    // port is closed and open_failure() tells the cause in one line.
    std::int16_t open_bus_port(std::string_view port_name, int baud, int parity_code, int data_bits,
                               int stop_bits);
    std::int16_t open_bus_port(const LineSettings& settings);
    void close_bus_port();
    const std::string& open_failure() const { return open_failure_; }

    // Non-zero while bus commands may be sent: while the port is open.
    bool bus_link_on() const { return port_.is_open(); }

    // The settings of the line that is open; nothing while none is. One that was only tried is never here.
    std::optional<LineSettings> settings() const {
        return bus_link_on() ? std::optional(settings_) : std::nullopt;
    }

    // After an opening that came to nothing: the line is again what settings() gave before it, closed when
    // that was nothing. A former line that does not open any more is told in the text, which is empty
    // otherwise; open_failure() has the cause then.
    std::string give_back(const std::optional<LineSettings>& before);
    const PortMap& ports() const { return options_.ports; }
    SerialPort& port() { return port_; }
    Clock& clock() { return clock_; }

    float text_reply_timeout = 0.394F;  // seconds; open_bus_port sets it from the baud rate

    // Whether a reply with another second header byte is not taken for that amplifier's.
    bool looks_at_reply_address(int address) const {
        return addresses_.looked_at(static_cast<std::uint8_t>(address));
    }

    std::function<void(const BusTraffic&)> on_traffic;

  private:
    enum class Stage { none, settling, waiting, resting };

    void settle();
    void send();
    std::string receive();
    void take_binary(std::string_view bytes);
    void take_text(std::string_view bytes);
    void end(BusFailure failure);

    SerialPort& port_;
    Clock& clock_;
    BusOptions options_;
    Crc16 crc_;
    ReplyAddresses addresses_;
    LineSettings settings_;
    std::string open_failure_;
    int spoken_to_ = 0;       // the address of the last frame
    bool unsettled_ = false;  // the last exchange failed: a late answer may still come
    // Nobody waited for the answer to a text frame. A binary frame need not wait for it either, no text is
    // taken for its reply; the next text has to.
    bool unanswered_text_ = false;

    // The exchange in hand, or the last one.
    Stage stage_ = Stage::none;
    std::optional<BusReply> kept_;  // somebody else's, who has not asked for it yet
    BusCommand command_;
    BusReply reply_;
    std::optional<ReplyParser> binary_;
    std::optional<TextReplyParser> text_;
    Instant sent_at_{};
    Instant settled_by_{};  // the latest that the line is taken for quiet
    Instant due_{};
    bool cut_ = false;
};

}  // namespace ampdesk
