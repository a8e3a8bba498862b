// One serial line, as everything above it sees it: bytes out, bytes in, and waiting with a limit.
// Implementations: the machine's lines (make_serial_port), the simulated bus (demo), the scripted
// port of the tests.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace ampdesk {

enum class PortError {
    none,
    not_found,          // no such device
    permission_denied,  // the cause names the group that owns the device
    in_use,             // another program or port object holds it
    not_a_serial_line,  // the name is a file, a folder, a disk …
    bad_settings,       // the driver refused the settings or did not keep them
    lost,               // unplugged or hung up; the port goes on trying by the same name
    stalled,            // the other side took no output before the deadline
    failed,             // any other operating-system error
};

enum class Handshake { none, xon_xoff, rts_cts };

struct PortSettings {
    std::string device;  // operating-system name, for example "/dev/ttyUSB0"
    int baud = 9600;     // 110, 300, 600, 1200, 2400, 4800, 9600 or 19200
    char parity = 'n';   // 'n', 'o' or 'e'
    int data_bits = 8;   // 5..8
    int stop_bits = 1;   // 1 or 2
    Handshake handshake = Handshake::none;
    bool operator==(const PortSettings&) const = default;
};

struct PortResult {
    PortError error = PortError::none;
    std::string cause;  // one line for the operator, UTF-8; empty on success
    bool ok() const { return error == PortError::none; }
};

enum class WaitResult { data, timed_out, lost };

// The modem lines as they stand.
struct ModemLines {
    bool cts = false;
    bool dsr = false;
    bool carrier = false;
    bool ring = false;
    bool operator==(const ModemLines&) const = default;
};

// What the driver has counted since it was loaded: errors on the line and edges of the modem lines.
struct LineCounts {
    unsigned framing = 0;
    unsigned parity = 0;
    unsigned overrun = 0;         // of the chip
    unsigned buffer_overrun = 0;  // of the driver's buffer
    unsigned breaks = 0;
    unsigned cts = 0;
    unsigned dsr = 0;
    unsigned carrier = 0;
    unsigned ring = 0;
    bool operator==(const LineCounts&) const = default;
};

class SerialPort {
  public:
    virtual ~SerialPort() = default;

    // Opens the line; one that was open is closed first. On failure the port is left closed.
    virtual PortResult open(const PortSettings& settings) = 0;

    virtual void close() = 0;

    // True from a successful open() to close(), also while the line is unplugged.
    virtual bool is_open() const = 0;

    // False on a closed port and while an open line is unplugged. Calls on a lost line try to open it again
    // by the same name, at most once every two seconds, and fail at once otherwise.
    virtual bool is_connected() const = 0;

    // Writes all bytes or reports why not. Waits at most until the deadline for room.
    virtual PortError write(std::string_view bytes, Instant deadline) = 0;

    // Writes as much as the line takes at once and never waits. The count, possibly 0; nothing when
    // the line is lost, closed or refuses.
    virtual std::optional<std::size_t> write_some(std::string_view bytes) {
        return write(bytes, Instant{}) == PortError::none ? std::optional(bytes.size()) : std::nullopt;
    }

    // Everything that is waiting, possibly nothing. Never blocks.
    virtual std::string read_waiting() = 0;

    // Blocks until input is waiting, the deadline has passed or the line is lost. Never spins.
    virtual WaitResult wait_readable(Instant deadline) = 0;

    // Throws away what is waiting.
    virtual void discard_input() { read_waiting(); }

    // Nothing where the device has no modem lines or no counters (a pseudo-terminal).
    virtual std::optional<ModemLines> modem_lines() { return std::nullopt; }
    virtual std::optional<LineCounts> line_counts() { return std::nullopt; }

    // False where the device has no such line.
    virtual bool set_dtr(bool /*on*/) { return false; }

    // Waits until all output has left; false when it has not by the deadline.
    virtual bool drain(Instant /*deadline*/) { return true; }

    // A descriptor that an event loop can watch for input; -1 when there is none now. It changes
    // when the line is lost and when it is back.
    virtual int watch_handle() const { return -1; }

    // For a port without such a descriptor: when input that is on its way will be there, an instant that
    // has passed when some is waiting already; nothing when none is known to come.
    virtual std::optional<Instant> input_due() const { return std::nullopt; }

    // Called once when an open line is lost (false) and once when it is back (true).
    std::function<void(bool connected)> on_connection_change;
};

// A closed port for the machine's own lines. Its deadlines are read on this clock.
std::unique_ptr<SerialPort> make_serial_port(Clock& clock);

}  // namespace ampdesk
