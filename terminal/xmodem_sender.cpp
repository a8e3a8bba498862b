#include "terminal/xmodem_sender.h"

#include <algorithm>

namespace ampdesk {

namespace {
// Time that a receiver may take between the end of a block and its answer.
constexpr std::chrono::milliseconds k_turn_round{200};
}  // namespace

XmodemSender::XmodemSender(std::string file, Duration block_time, Instant now)
    : file_(std::move(file)), block_time_(block_time), deadline_(now + k_start_limit) {
    progress_.total = file_.size();
}

void XmodemSender::feed(std::string_view bytes, Instant now) {
    for (const char c : bytes)
        if (!finished())
            take(c, now);
}

void XmodemSender::take(char c, Instant now) {
    cancels_ = c == k_can ? cancels_ + 1 : 0;
    if (cancels_ == 2) {
        output_.clear();
        fail("The other side has cancelled.");
        return;
    }
    // Nothing can answer what has not left yet.
    if (!output_.empty())
        return;
    const bool asks_for_crc = c == k_want_crc && block_ == 1;
    switch (wait_) {
        case Wait::start:
            if (c == k_want_crc || c == k_nak) {
                check_ = c == k_nak ? XmodemCheck::sum : XmodemCheck::crc;
                send(now);
            }
            break;
        case Wait::answer:
            if (asks_for_crc)
                check_ = XmodemCheck::crc;
            if (c == k_nak || asks_for_crc)
                send_again(now);
            else if (c == k_ack && repeats_ == 0)
                confirmed(now);
            else if (c == k_ack) {
                // Each copy of a block gets an answer of its own. Taken for the answer to the next
                // block, the second one would leave a hole in the file.
                wait_ = Wait::echo;
                deadline_ = now + block_time_ + k_turn_round;
            }
            break;
        case Wait::echo:
            break;
        case Wait::end_seen:
            if (c == k_nak)
                send_again(now);
            else if (c == k_ack)
                finish(TransferState::done, std::to_string(file_.size()) + " bytes sent.");
            break;
    }
}

void XmodemSender::confirmed(Instant now) {
    progress_.bytes = std::min(offset() + k_xmodem_data, file_.size());
    ++block_;
    repeats_ = 0;
    send(now);
}

void XmodemSender::send(Instant now) {
    deadline_ = now + block_time_ + k_answer_limit;
    if (offset() >= file_.size()) {
        wait_ = Wait::end_seen;
        output_ = k_eot;
        return;
    }
    wait_ = Wait::answer;
    output_ = xmodem_block(static_cast<std::uint8_t>(block_),
                           std::string_view(file_).substr(offset(), k_xmodem_data), check_);
}

void XmodemSender::send_again(Instant now) {
    if (repeats_ == k_repeats) {
        give_up(wait_ == Wait::end_seen ? "Everything was sent, but the other side did not confirm the end."
                                        : "Block " + std::to_string(block_) + " was not taken after " +
                                              std::to_string(k_repeats) + " repeats.");
        return;
    }
    ++repeats_;
    ++progress_.errors;
    send(now);
}

void XmodemSender::tick(Instant now) {
    if (finished() || now < deadline_)
        return;
    switch (wait_) {
        case Wait::start:
            give_up("The other side did not begin to receive within " +
                    std::to_string(k_start_limit.count()) + " s.");
            break;
        case Wait::answer:
        case Wait::end_seen:
            send_again(now);
            break;
        case Wait::echo:
            confirmed(now);
            break;
    }
}

}  // namespace ampdesk
