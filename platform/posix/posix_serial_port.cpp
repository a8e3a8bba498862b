#include "platform/posix/posix_serial_port.h"

#include <poll.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/posix/open_line.h"
#include "platform/posix/time_span.h"

namespace ampdesk {

namespace {

constexpr std::chrono::seconds k_try_again{2};
constexpr std::chrono::milliseconds k_close_limit{500};
constexpr std::chrono::milliseconds k_drain_step{10};
constexpr std::size_t k_block = 4096;  // what a terminal driver holds at most
constexpr int k_blocks_at_once = 16;   // so that an endless sender cannot hold the caller

}  // namespace

std::unique_ptr<SerialPort> make_serial_port(Clock& clock) {
    return std::make_unique<PosixSerialPort>(clock);
}

PortResult PosixSerialPort::open(const PortSettings& settings) {
    close();
    settings_ = settings;
    PortResult result = open_line(settings, line_);
    open_ = result.ok();
    return result;
}

void PosixSerialPort::close() {
    // The driver's own close waits for the output, half a minute where something holds it back.
    if (line_ && (settings_.handshake == Handshake::rts_cts || !drain(clock_.now() + k_close_limit)))
        tcflush(line_.get(), TCOFLUSH);
    line_.close();
    open_ = false;
}

// True when there is a line to work on. A lost one is opened again when its time has come; the
// listener may close the port meanwhile.
bool PosixSerialPort::connect() {
    if (line_ || !open_)
        return static_cast<bool>(line_);
    const Instant now = clock_.now();
    if (now < next_try_)
        return false;
    next_try_ = now + k_try_again;
    if (!open_line(settings_, line_).ok())
        return false;
    if (on_connection_change)
        on_connection_change(true);
    return static_cast<bool>(line_);
}

// Closes the descriptor, so that the device can come back under its name.
void PosixSerialPort::lose() {
    line_.close();
    next_try_ = clock_.now() + k_try_again;
    if (on_connection_change)
        on_connection_change(false);
}

// Any hang-up counts, also one with input waiting: a hung-up line reports both and gives nothing.
PosixSerialPort::Ready PosixSerialPort::wait_for(short event, Instant deadline) {
    for (;;) {
        pollfd watched{.fd = line_.get(), .events = event, .revents = 0};
        const timespec left = time_span(deadline - clock_.now());
        const int count = ppoll(&watched, 1, &left, nullptr);
        if (count == 0)
            return Ready::timed_out;
        if (count < 0 && errno == EINTR)
            continue;
        if (count > 0 && watched.revents == event)
            return Ready::yes;
        lose();
        return Ready::lost;
    }
}

PortError PosixSerialPort::write(std::string_view bytes, Instant deadline) {
    if (!open_)
        return PortError::failed;
    if (!connect())
        return PortError::lost;
    while (!bytes.empty()) {
        const ssize_t taken = ::write(line_.get(), bytes.data(), bytes.size());
        if (taken > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(taken));
            continue;
        }
        if (taken < 0 && errno == EINTR)
            continue;
        if (taken < 0 && errno != EAGAIN) {
            lose();
            return PortError::lost;
        }
        const Ready ready = wait_for(POLLOUT, deadline);
        if (ready == Ready::lost)
            return PortError::lost;
        if (ready == Ready::timed_out) {
            tcflush(line_.get(), TCOFLUSH);
            return PortError::stalled;
        }
    }
    return PortError::none;
}

std::optional<std::size_t> PosixSerialPort::write_some(std::string_view bytes) {
    if (!connect())
        return std::nullopt;
    for (;;) {
        const ssize_t taken = ::write(line_.get(), bytes.data(), bytes.size());
        if (taken >= 0)
            return static_cast<std::size_t>(taken);
        if (errno == EAGAIN)
            return 0;
        if (errno == EINTR)
            continue;
        lose();
        return std::nullopt;
    }
}

// Bytes read, 0 when none are waiting or the line has just been lost.
std::size_t PosixSerialPort::read_some(char* buffer, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(line_.get(), buffer, size);
        if (count > 0)
            return static_cast<std::size_t>(count);
        if (count < 0 && errno == EAGAIN)
            return 0;
        if (count < 0 && errno == EINTR)
            continue;
        lose();
        return 0;
    }
}

std::string PosixSerialPort::read_waiting() {
    std::string bytes;
    if (!connect())
        return bytes;
    std::array<char, k_block> block;
    for (int i = 0; i < k_blocks_at_once; ++i) {
        const std::size_t count = read_some(block.data(), block.size());
        bytes.append(block.data(), count);
        if (count < block.size())  // the driver is empty; asking again would cost a call
            break;
    }
    return bytes;
}

WaitResult PosixSerialPort::wait_readable(Instant deadline) {
    if (!connect())
        return WaitResult::lost;
    switch (wait_for(POLLIN, deadline)) {
        case Ready::yes:
            return WaitResult::data;
        case Ready::timed_out:
            return WaitResult::timed_out;
        case Ready::lost:
            break;
    }
    return WaitResult::lost;
}

// The ordinary case, nothing waiting, costs one call.
void PosixSerialPort::discard_input() {
    if (!connect())
        return;
    std::array<char, k_block> block;
    for (int i = 0; i < k_blocks_at_once; ++i)
        if (read_some(block.data(), block.size()) < block.size())
            return;
    if (line_)
        tcflush(line_.get(), TCIFLUSH);
}

std::optional<ModemLines> PosixSerialPort::modem_lines() {
    return line_ ? read_modem_lines(call_, line_.get()) : std::nullopt;
}

std::optional<LineCounts> PosixSerialPort::line_counts() {
    return line_ ? read_line_counts(call_, line_.get()) : std::nullopt;
}

bool PosixSerialPort::set_dtr(bool on) {
    return line_ && set_line_dtr(call_, line_.get(), on);
}

// Not the driver's own call for it, which knows no limit.
bool PosixSerialPort::drain(Instant deadline) {
    for (;;) {
        if (!line_)
            return false;
        if (line_output_left(call_, line_.get()))
            return true;
        const Instant now = clock_.now();
        if (now >= deadline)
            return false;
        clock_.sleep_until(std::min(deadline, now + k_drain_step));
    }
}

}  // namespace ampdesk
