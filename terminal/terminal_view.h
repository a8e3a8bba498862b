// What is to be seen of the terminal and of a file on its way: values for menus, dialogs and the text box.
#pragma once

#include <optional>
#include <string>

#include "platform/operator.h"
#include "terminal/terminal_settings.h"
#include "terminal/transfer.h"

namespace ampdesk {

struct TerminalView {
    TerminalSettings settings{};
    std::string port_name = "No port";  // or "COM2:"
    std::string state{};                // of the port and its modem lines, one or two lines of text
    bool open = false;
    bool connected = false;   // not while the open line is unplugged
    bool taken = false;       // by a file transfer or the null modem test
    bool hanging_up = false;  // nobody may send
    bool answers = false;     // the modem, by itself
    bool log_open = false;
    PortSettings line{};                     // of the port that is open, or was last
    std::optional<LineSettings> bus_line{};  // of the amplifiers' bus while it is open
    bool operator==(const TerminalView&) const = default;

    // Whether a typed character is shown as it goes out. Without a port it is shown and goes nowhere.
    bool shows_typed() const { return !open || (settings.echo && !taken && !hanging_up); }
};

enum class TransferDirection { send, receive };

struct TransferView {
    TransferDirection direction = TransferDirection::send;
    bool xmodem = true;  // or plain text
    std::string path{};
    // Until the line is free again, and what was received has been kept or given up.
    bool busy = false;
    TransferState state = TransferState::running;
    TransferProgress progress{};
    std::string message{};  // what became of it, once it is not busy any more
    bool operator==(const TransferView&) const = default;
};

// Whether a modem command can be sent now, or a transfer begin; if not, the operator has been told why.
bool line_free(const TerminalView& terminal, Operator& person);

}  // namespace ampdesk
