// Plain text over the terminal line, without a protocol: nothing is checked and nothing repeated.
#pragma once

#include "terminal/transfer.h"

namespace ampdesk {

// Sends a file's lines, each ended by CR LF however the file ends them; a last line without an end
// is sent without one. What comes in meanwhile is not looked at.
class TextSender : public Transfer {
  public:
    explicit TextSender(std::string_view file);

    void feed(std::string_view, Instant) override {}
    void tick(Instant) override {}
    std::string take_output(std::size_t limit) override;

  private:
    std::string text_;
};

// Keeps what comes in, byte for byte, until the operator ends it or the line has been silent for
// k_silence after the first byte.
class TextReceiver : public Transfer {
  public:
    static constexpr std::chrono::seconds k_silence{10};

    void feed(std::string_view bytes, Instant now) override;
    void tick(Instant now) override;

    // The operator has seen enough.
    void end();

    // The text once the transfer is done.
    const std::string& file() const { return file_; }

  private:
    std::string file_;
    Instant deadline_{};
};

}  // namespace ampdesk
