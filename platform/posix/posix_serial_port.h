// The port that make_serial_port makes: the line on the operating system's terminal driver. Waits without
// using the processor, notices an unplugged adapter at once and takes it back when it returns under the same
// name.
#pragma once

#include "platform/descriptor.h"
#include "platform/posix/line_status.h"
#include "platform/serial_port.h"

namespace ampdesk {

class PosixSerialPort : public SerialPort {
  public:
    // Deadlines are read on this clock, and so is the time between two attempts at a lost line.
    // `call` makes the control calls of modem lines, counts and drain.
    explicit PosixSerialPort(Clock& clock, LineCall call = system_line_call)
        : clock_(clock), call_(std::move(call)) {}
    ~PosixSerialPort() override { PosixSerialPort::close(); }
    PosixSerialPort(const PosixSerialPort&) = delete;
    PosixSerialPort& operator=(const PosixSerialPort&) = delete;

    // Holds the device for itself: a second port object or program that asks for the same lock is
    // refused. What had come in before is thrown away.
    PortResult open(const PortSettings& settings) override;

    // Output gets half a second to leave; what a hardware handshake holds back is thrown away at once.
    void close() override;

    bool is_open() const override { return open_; }
    bool is_connected() const override { return static_cast<bool>(line_); }

    // When the deadline passes, what the driver still holds is thrown away, so that half a frame
    // does not leave at some later time. A port that is not open reports `failed`.
    PortError write(std::string_view bytes, Instant deadline) override;

    std::optional<std::size_t> write_some(std::string_view bytes) override;

    // At most 64 KiB a call.
    std::string read_waiting() override;

    // A port that is not open, or whose line is lost, reports `lost` at once.
    WaitResult wait_readable(Instant deadline) override;

    void discard_input() override;

    // Nothing, or false, while the line is lost, too.
    std::optional<ModemLines> modem_lines() override;
    std::optional<LineCounts> line_counts() override;
    bool set_dtr(bool on) override;
    bool drain(Instant deadline) override;

    int watch_handle() const override { return line_.get(); }

  private:
    enum class Ready { yes, timed_out, lost };

    bool connect();
    void lose();
    Ready wait_for(short event, Instant deadline);
    std::size_t read_some(char* buffer, std::size_t size);

    Clock& clock_;
    LineCall call_;
    PortSettings settings_;
    bool open_ = false;
    Descriptor line_;     // none while the line is lost
    Instant next_try_{};  // of opening a lost line again
};

}  // namespace ampdesk
