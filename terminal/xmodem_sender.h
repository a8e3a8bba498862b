// Sends a file by XMODEM, with the CRC or the sum as the receiver asks. The receiver leads: a block
// is sent again when it says so, and of its own accord only when it has been silent for long.
#pragma once

#include "terminal/transfer.h"
#include "terminal/xmodem_block.h"

namespace ampdesk {

class XmodemSender : public Transfer {
  public:
    static constexpr std::chrono::seconds k_start_limit{60};   // for the receiver to begin
    static constexpr std::chrono::seconds k_answer_limit{15};  // beyond the receiver's own 10 s
    static constexpr int k_repeats = 10;                       // of one block, and of the end

    // `block_time` is what one block takes on the line at its speed.
    XmodemSender(std::string file, Duration block_time, Instant now);

    void feed(std::string_view bytes, Instant now) override;
    void tick(Instant now) override;

  protected:
    std::string_view farewell() const override { return k_xmodem_cancel; }

  private:
    enum class Wait {
        start,    // for the receiver's first character
        answer,   // to a block
        echo,     // for a second answer, to the copy of a block that was sent twice
        end_seen  // for the answer to the end of the transmission
    };
    void take(char c, Instant now);
    void send(Instant now);
    void send_again(Instant now);
    void confirmed(Instant now);
    std::size_t offset() const { return (block_ - 1) * k_xmodem_data; }

    std::string file_;
    Duration block_time_;
    Wait wait_ = Wait::start;
    Instant deadline_;
    XmodemCheck check_ = XmodemCheck::crc;
    std::size_t block_ = 1;  // the one under way, not wrapped; past the last one is the end
    int repeats_ = 0;
    int cancels_ = 0;  // CAN in a row
};

}  // namespace ampdesk
