#include "platform/posix/line_status.h"

#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace ampdesk {

int system_line_call(int fd, unsigned long request, void* argument) {
    return ioctl(fd, request, argument);
}

std::optional<ModemLines> read_modem_lines(const LineCall& call, int fd) {
    int bits = 0;
    if (call(fd, TIOCMGET, &bits) < 0)
        return std::nullopt;
    return ModemLines{.cts = (bits & TIOCM_CTS) != 0,
                      .dsr = (bits & TIOCM_DSR) != 0,
                      .carrier = (bits & TIOCM_CAR) != 0,
                      .ring = (bits & TIOCM_RNG) != 0};
}

std::optional<LineCounts> read_line_counts(const LineCall& call, int fd) {
    serial_icounter_struct counts{};
    if (call(fd, TIOCGICOUNT, &counts) < 0)
        return std::nullopt;
    const auto value = [](int count) { return static_cast<unsigned>(count); };
    return LineCounts{.framing = value(counts.frame),
                      .parity = value(counts.parity),
                      .overrun = value(counts.overrun),
                      .buffer_overrun = value(counts.buf_overrun),
                      .breaks = value(counts.brk),
                      .cts = value(counts.cts),
                      .dsr = value(counts.dsr),
                      .carrier = value(counts.dcd),
                      .ring = value(counts.rng)};
}

bool set_line_dtr(const LineCall& call, int fd, bool on) {
    int bit = TIOCM_DTR;
    return call(fd, on ? TIOCMBIS : TIOCMBIC, &bit) >= 0;
}

bool line_output_left(const LineCall& call, int fd) {
    int waiting = 0;
    if (call(fd, TIOCOUTQ, &waiting) >= 0 && waiting > 0)
        return false;
    unsigned chip = 0;
    return call(fd, TIOCSERGETLSR, &chip) < 0 || (chip & TIOCSER_TEMT) != 0;
}

}  // namespace ampdesk
