// A file on its way over the terminal line, as a state machine without a port: bytes in, bytes out,
// finished. Whoever holds the line feeds it what comes in, ticks it, and sends what it gives.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace ampdesk {

enum class TransferState { running, done, cancelled, failed };

struct TransferProgress {
    std::size_t bytes = 0;             // of the file; where the protocol confirms them, those confirmed
    std::optional<std::size_t> total;  // nothing when nobody knows it beforehand
    int errors = 0;                    // blocks asked for or sent once more
    bool operator==(const TransferProgress&) const = default;
};

class Transfer {
  public:
    // Files are held in memory. This many bytes take hours on the fastest line offered.
    static constexpr std::size_t k_longest_file = 16U << 20U;

    virtual ~Transfer() = default;

    // What has come in. It makes no difference how the bytes are cut into calls; but what is fed
    // before the output has been taken cannot be an answer to that output.
    virtual void feed(std::string_view bytes, Instant now) = 0;

    // To be called at least every 200 ms: time-outs fall due here.
    virtual void tick(Instant now) = 0;

    // The next bytes to send: a block whole, of a text at most `limit` bytes. There may be some after
    // the end: the word to the other side that the transfer is off.
    virtual std::string take_output(std::size_t limit);

    // The operator's wish. Harmless after the end.
    void cancel();

    // The line cannot be used any more; one line of cause.
    void fail(std::string message);

    TransferState state() const { return state_; }
    bool finished() const { return state_ != TransferState::running; }

    // What became of it, for the operator; empty until the end.
    const std::string& message() const { return message_; }

    const TransferProgress& progress() const { return progress_; }

  protected:
    void finish(TransferState state, std::string message);

    // What tells the other side that the transfer is off; nothing where no such thing exists.
    virtual std::string_view farewell() const { return {}; }

    // Fails and says so to the other side.
    void give_up(std::string message);

    std::string output_;
    TransferProgress progress_;

  private:
    TransferState state_ = TransferState::running;
    std::string message_;
};

}  // namespace ampdesk
