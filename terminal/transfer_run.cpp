#include "terminal/transfer_run.h"

#include <algorithm>
#include <utility>

namespace ampdesk {

namespace {

using std::chrono::milliseconds;

// What is still on its way when a transfer ends early is swallowed, so that half a block does not
// run over the terminal.
constexpr milliseconds k_quiet{300};
constexpr milliseconds k_longest_swallowing{3000};

// A text goes to the driver in pieces of this length, each when the one before has left, so that a
// cancelled one stops soon.
constexpr milliseconds k_piece{500};

}  // namespace

TransferRun::TransferRun(TerminalLine& line, Transfer& transfer) : line_(line), transfer_(transfer) {}

TransferRun::~TransferRun() {
    if (holding_)
        line_.release();
}

bool TransferRun::start() {
    LineHolder holder;
    holder.received = [this](std::string_view bytes) { received(bytes); };
    holder.ended = [this] {
        holding_ = false;
        transfer_.fail("The terminal port was closed.");
    };
    holding_ = line_.is_connected() && line_.take(std::move(holder));
    send_on();
    return holding_;
}

void TransferRun::received(std::string_view bytes) {
    last_input_ = line_.clock().now();
    transfer_.feed(bytes, last_input_);
    send_on();
}

void TransferRun::tick() {
    if (!holding_)
        return;
    // What has come in while no events could run must not count as silence.
    line_.pump();
    if (!holding_)
        return;
    if (!line_.is_connected())
        transfer_.fail("The connection of the terminal port was lost.");
    transfer_.tick(line_.clock().now());
    send_on();
    if (transfer_.finished())
        let_go_when_quiet();
}

void TransferRun::send_on() {
    if (!holding_ || (!transfer_.finished() && !line_.output_left()))
        return;
    const auto piece = static_cast<std::size_t>(k_piece / character_time(line_.settings()));
    const std::string bytes = transfer_.take_output(piece);
    if (!bytes.empty())
        line_.send(bytes);
}

void TransferRun::let_go_when_quiet() {
    const Instant now = line_.clock().now();
    if (!end_)
        end_ = now;
    const bool quiet = now - std::max(*end_, last_input_) >= k_quiet;
    if (transfer_.state() != TransferState::done && !quiet && now - *end_ < k_longest_swallowing)
        return;
    holding_ = false;
    line_.release();
}

Duration character_time(const PortSettings& settings) {
    const int bits = 1 + settings.data_bits + (settings.parity == 'n' ? 0 : 1) + settings.stop_bits;
    return Duration(std::chrono::seconds(bits)) / settings.baud;
}

std::string_view xmodem_obstacle(const PortSettings& settings) {
    if (settings.data_bits != 8)
        return "XMODEM needs 8 data bits";
    if (settings.handshake == Handshake::xon_xoff)
        return "XMODEM does not work with the XON/XOFF handshake";
    return {};
}

}  // namespace ampdesk
