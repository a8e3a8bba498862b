// A transfer and the terminal line brought together: holds the line while the transfer runs, carries
// the bytes both ways, and lets go when it is over. Never blocks.
#pragma once

#include "terminal/terminal_line.h"
#include "terminal/transfer.h"

namespace ampdesk {

class TransferRun {
  public:
    // The references stay valid as long as the run.
    TransferRun(TerminalLine& line, Transfer& transfer);
    ~TransferRun();
    TransferRun(const TransferRun&) = delete;
    TransferRun& operator=(const TransferRun&) = delete;

    // Takes the line. False when it is closed, unplugged or held by somebody else.
    bool start();

    // To be called every k_tick from the start until over().
    static constexpr std::chrono::milliseconds k_tick{50};
    void tick();

    // The transfer has ended and the line is free again.
    bool over() const { return !holding_; }

  private:
    void received(std::string_view bytes);
    void send_on();
    void let_go_when_quiet();

    TerminalLine& line_;
    Transfer& transfer_;
    bool holding_ = false;
    Instant last_input_{};
    std::optional<Instant> end_;  // of the transfer
};

// How long one character takes on a line of these settings, with its start, parity and stop bits.
Duration character_time(const PortSettings& settings);

// Why XMODEM cannot work on such a line, in words for the operator; empty when it can.
std::string_view xmodem_obstacle(const PortSettings& settings);

}  // namespace ampdesk
