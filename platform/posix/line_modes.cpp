#include "platform/posix/line_modes.h"

#include <array>
#include <utility>

namespace ampdesk {

namespace {

constexpr std::array<std::pair<int, speed_t>, 8> k_speeds = {{{110, B110},
                                                              {300, B300},
                                                              {600, B600},
                                                              {1200, B1200},
                                                              {2400, B2400},
                                                              {4800, B4800},
                                                              {9600, B9600},
                                                              {19200, B19200}}};
constexpr std::array<tcflag_t, 4> k_sizes = {CS5, CS6, CS7, CS8};

std::optional<speed_t> speed_of(int baud) {
    for (const auto& [rate, speed] : k_speeds)
        if (rate == baud)
            return speed;
    return std::nullopt;
}

std::optional<tcflag_t> parity_flags(char parity) {
    switch (parity) {
        case 'n':
            return 0;
        case 'e':
            return PARENB;
        case 'o':
            return PARENB | PARODD;
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<termios> line_modes(const PortSettings& settings) {
    const auto speed = speed_of(settings.baud);
    const auto parity = parity_flags(settings.parity);
    const bool counts_fit = settings.data_bits >= 5 && settings.data_bits <= 8 && settings.stop_bits >= 1 &&
                            settings.stop_bits <= 2;
    if (!speed || !parity || !counts_fit)
        return std::nullopt;
    termios modes{};
    // HUPCL: closing the port drops DTR, which makes a modem hang up.
    modes.c_cflag =
        CREAD | CLOCAL | HUPCL | *parity | k_sizes[static_cast<std::size_t>(settings.data_bits - 5)];
    if (settings.stop_bits == 2)
        modes.c_cflag |= CSTOPB;
    // Neither IGNPAR nor PARMRK: a byte with a wrong parity arrives as one NUL, which no checksum
    // and no reader takes for the byte that was sent.
    if (*parity != 0)
        modes.c_iflag |= INPCK;
    if (settings.handshake == Handshake::xon_xoff)
        modes.c_iflag |= IXON | IXOFF;
    if (settings.handshake == Handshake::rts_cts)
        modes.c_cflag |= CRTSCTS;
    modes.c_cc[VMIN] = 1;
    modes.c_cc[VTIME] = 0;
    modes.c_cc[VSTART] = 0x11;  // XON
    modes.c_cc[VSTOP] = 0x13;   // XOFF
    cfsetispeed(&modes, *speed);
    cfsetospeed(&modes, *speed);
    return modes;
}

bool modes_kept(const termios& wanted, const termios& kept, bool pseudo_terminal) {
    tcflag_t control = CREAD | CLOCAL | CSTOPB | CRTSCTS;
    if (!pseudo_terminal)
        control |= CSIZE | PARENB | PARODD;
    const tcflag_t input = IGNPAR | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF;
    const tcflag_t local = ICANON | ECHO | ISIG | IEXTEN;
    return cfgetospeed(&wanted) == cfgetospeed(&kept) &&
           (wanted.c_cflag & control) == (kept.c_cflag & control) &&
           (wanted.c_iflag & input) == (kept.c_iflag & input) &&
           (wanted.c_oflag & OPOST) == (kept.c_oflag & OPOST) &&
           (wanted.c_lflag & local) == (kept.c_lflag & local) && kept.c_cc[VMIN] == 1 &&
           kept.c_cc[VTIME] == 0;
}

std::string settings_text(const PortSettings& settings) {
    return std::to_string(settings.baud) + "," + settings.parity + "," + std::to_string(settings.data_bits) +
           "," + std::to_string(settings.stop_bits);
}

}  // namespace ampdesk
