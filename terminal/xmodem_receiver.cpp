#include "terminal/xmodem_receiver.h"

#include <algorithm>

namespace ampdesk {

XmodemReceiver::XmodemReceiver(Instant now) {
    call(now);
}

void XmodemReceiver::feed(std::string_view bytes, Instant now) {
    for (const char c : bytes)
        if (!finished())
            take(c, now);
}

void XmodemReceiver::take(char c, Instant now) {
    if (c != '\b')
        cancels_ = c == k_can ? cancels_ + 1 : 0;
    switch (state_) {
        case State::between:
            take_between(c, now);
            break;
        case State::block:
            body_ += c;
            deadline_ = now + k_character_wait;
            judge_block(now);
            break;
        case State::spoilt:
            deadline_ = std::min(now + k_quiet, spoilt_limit_);
            break;
    }
}

void XmodemReceiver::take_between(char c, Instant now) {
    if (cancels_ == 2) {
        fail("The other side has cancelled.");
    } else if (c == k_soh || c == k_stx) {
        state_ = State::block;
        heard_ = true;
        data_size_ = c == k_soh ? k_xmodem_data : k_xmodem_long_data;
        body_.clear();
        deadline_ = now + k_character_wait;
    } else if (c == k_eot && output_.empty() && !end_heard_) {
        // Noise may look like the end, but hardly twice: the sender repeats it when asked to.
        end_heard_ = true;
        answer(k_nak, now);
    } else if (c == k_eot && output_.empty()) {
        answer(k_ack, now);
        finish(TransferState::done, std::to_string(file_.size()) + " bytes received.");
    }
}

// Looks whether the block is whole, and what it is worth.
void XmodemReceiver::judge_block(Instant now) {
    const std::size_t with_sum = 2 + data_size_ + 1;
    const std::size_t whole = with_sum + (check_ == XmodemCheck::crc ? 1 : 0);
    if (body_.size() < whole)
        return;
    const std::string_view data = std::string_view(body_).substr(2, data_size_);
    const std::string_view check = std::string_view(body_).substr(2 + data_size_);
    const bool number_is_sound =
        static_cast<unsigned char>(body_[0]) + static_cast<unsigned char>(body_[1]) == 255;
    if (number_is_sound && check == xmodem_check(check_, data)) {
        take_block(now);
        return;
    }
    if (check_ == XmodemCheck::sum && block_ == 1) {
        // The sender may have begun at the last "C", just before the sum was asked for.
        if (body_.size() == with_sum)
            return;
        if (number_is_sound && check == xmodem_check(XmodemCheck::crc, data)) {
            check_ = XmodemCheck::crc;
            take_block(now);
            return;
        }
    }
    state_ = State::spoilt;
    deadline_ = now + k_quiet;
    spoilt_limit_ = now + k_block_wait;
}

void XmodemReceiver::take_block(Instant now) {
    const auto number = static_cast<std::uint8_t>(body_[0]);
    if (number == static_cast<std::uint8_t>(block_)) {
        file_.append(body_, 2, data_size_);
        if (file_.size() > k_longest_file) {
            give_up("The file is longer than " + std::to_string(k_longest_file >> 20U) + " MB.");
            return;
        }
        progress_.bytes = file_.size();
        ++block_;
        end_heard_ = false;
    } else if (block_ == 1 || number != static_cast<std::uint8_t>(block_ - 1)) {
        give_up("Block " + std::to_string(number) + " came instead of block " +
                std::to_string(static_cast<std::uint8_t>(block_)) + ".");
        return;
    }
    // Also for the block before: the sender has missed our answer to it.
    complaints_ = 0;
    answer(k_ack, now);
}

void XmodemReceiver::answer(char c, Instant now) {
    output_ += c;
    state_ = State::between;
    cancels_ = 0;
    heard_ = false;
    deadline_ = now + k_block_wait;
}

// Asks for the first block again and again, for any later one by a NAK.
void XmodemReceiver::call(Instant now) {
    const bool first = block_ == 1;
    if (first && !heard_ && complaints_ >= k_crc_calls)
        check_ = XmodemCheck::sum;
    const bool want_crc = first && check_ == XmodemCheck::crc && !end_heard_;
    answer(want_crc ? k_want_crc : k_nak, now);
    if (want_crc)
        deadline_ = now + k_crc_wait;
}

void XmodemReceiver::complain(Instant now) {
    if (state_ != State::between && cancels_ > 2) {  // in the middle of a block
        fail("The other side has cancelled.");
        return;
    }
    if (complaints_ == k_repeats) {
        give_up(block_ == 1 ? "The other side did not begin to send."
                            : "Block " + std::to_string(block_) + " did not come after " +
                                  std::to_string(k_repeats) + " repeats.");
        return;
    }
    ++complaints_;
    if (block_ > 1 || heard_)
        ++progress_.errors;
    call(now);
}

void XmodemReceiver::tick(Instant now) {
    if (!finished() && now >= deadline_)
        complain(now);
}

}  // namespace ampdesk
