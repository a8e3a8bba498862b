// Receives a file by XMODEM. Asks for the CRC first and falls back to the sum for a sender that does
// not know it. Takes blocks of 128 and of 1024 bytes.
//
// The protocol does not carry the file's length: the sender fills up the last block. What was
// received is kept as it came, with up to 127 bytes 0x1A at its end; cutting them would damage a
// file that ends in such bytes itself.
#pragma once

#include "terminal/transfer.h"
#include "terminal/xmodem_block.h"

namespace ampdesk {

class XmodemReceiver : public Transfer {
  public:
    static constexpr std::chrono::seconds k_crc_wait{3};  // between two calls "C" …
    static constexpr int k_crc_calls = 4;                 // … before the sum is asked for
    static constexpr std::chrono::seconds k_block_wait{10};
    static constexpr std::chrono::seconds k_character_wait{1};  // inside a block
    static constexpr std::chrono::milliseconds k_quiet{250};    // after a spoilt block, before the NAK
    static constexpr int k_repeats = 10;                        // of one call

    explicit XmodemReceiver(Instant now);

    void feed(std::string_view bytes, Instant now) override;
    void tick(Instant now) override;

    // The file once the transfer is done.
    const std::string& file() const { return file_; }

  protected:
    std::string_view farewell() const override { return k_xmodem_cancel; }

  private:
    enum class State {
        between,  // blocks
        block,    // inside one
        spoilt,   // waiting for the line to fall quiet
    };
    void take(char c, Instant now);
    void take_between(char c, Instant now);
    void judge_block(Instant now);
    void take_block(Instant now);
    void answer(char c, Instant now);
    void call(Instant now);
    void complain(Instant now);

    std::string file_;
    std::size_t block_ = 1;  // the one expected, not wrapped
    XmodemCheck check_ = XmodemCheck::crc;
    State state_ = State::between;
    Instant deadline_;
    Instant spoilt_limit_;       // of a line that never falls quiet
    std::size_t data_size_ = 0;  // of the block under way
    std::string body_;           // of the block under way: what follows SOH
    bool heard_ = false;         // a block has begun since the last call
    bool end_heard_ = false;
    int complaints_ = 0;  // in a row
    int cancels_ = 0;     // CAN in a row
};

}  // namespace ampdesk
