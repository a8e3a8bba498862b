#include "buslink/wire/binary_frame.h"

#include <algorithm>

#include "buslink/wire/control_characters.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

std::string with_crc(const Crc16& crc, std::string frame) {
    const unsigned value = crc.c_chkCRC(frame);
    frame += static_cast<char>(value & 0xFFU);
    frame += static_cast<char>(value >> 8U);
    return frame;
}

std::string with_length(char first, char second, std::string_view data) {
    if (data.size() > k_longest_command)
        throw RunTimeError::overflow();
    std::string frame{first, second, static_cast<char>(data.size())};
    return frame.append(data);
}

bool begins_alike(std::string_view a, std::string_view b) {
    const std::size_t n = std::min(a.size(), b.size());
    return a.substr(0, n) == b.substr(0, n);
}

std::size_t frame_length(std::string_view bytes) {
    return static_cast<unsigned char>(bytes[2]) + 5U;
}

}  // namespace

std::string build_command_frame(const Crc16& crc, std::uint8_t address, std::string_view command) {
    return with_crc(crc, with_length(k_soh, static_cast<char>(address), command));
}

std::string build_reply_frame(const Crc16& crc, char first, std::uint8_t second, std::string_view data) {
    return with_crc(crc, with_length(first, static_cast<char>(second), data));
}

ReplyParser::ReplyParser(const Crc16& crc, std::string_view sent, bool address_checked)
    : crc_(crc), sent_(sent), echo_(sent.substr(3, std::min<std::size_t>(2, sent.size() - 5))) {
    if (address_checked)
        address_ = static_cast<std::uint8_t>(sent[1]);
}

// What a stretch that starts here is, or may yet become.
ReplyParser::Candidate ReplyParser::judge(std::string_view bytes) const {
    if (bytes[0] != k_ack && bytes[0] != k_nak)
        return Candidate::nothing;
    const bool ours = address_fits(bytes) && echo_fits(bytes);
    if (bytes.size() < 3 || bytes.size() < frame_length(bytes))
        return ours ? Candidate::growing : Candidate::foreign;
    if (crc_.c_chkCRC(bytes.substr(0, frame_length(bytes))) != 0) {
        const bool echoed = ours && (bytes[2] != 0 || echo_.empty());
        return echoed ? Candidate::unsound : Candidate::nothing;
    }
    return ours ? Candidate::sound : Candidate::skipped;
}

// Whether these, as far as they have come, fit the command that was sent.
bool ReplyParser::address_fits(std::string_view bytes) const {
    return !address_ || bytes.size() < 2 || static_cast<std::uint8_t>(bytes[1]) == *address_;
}

// A reply without data has no echo to compare.
bool ReplyParser::echo_fits(std::string_view bytes) const {
    if (bytes.size() < 3 || bytes[2] == 0)
        return true;
    return static_cast<unsigned char>(bytes[2]) >= echo_.size() && begins_alike(bytes.substr(3), echo_);
}

ReplyParser::State ReplyParser::feed(std::string_view bytes) {
    if (state_ != State::waiting)
        return state_;
    buffer_.append(bytes);
    const std::string_view all = buffer_;
    std::size_t keep_from = all.size();  // the first byte that may still matter
    bool growing = false;
    bool unsound = false;
    std::size_t at = 0;
    while (at < all.size()) {
        const std::string_view rest = all.substr(at);
        if (begins_alike(rest, sent_)) {
            if (rest.size() < sent_.size()) {
                keep_from = std::min(keep_from, at);
                break;
            }
            at += sent_.size();
            continue;
        }
        const Candidate candidate = judge(rest);
        if (candidate == Candidate::sound) {
            reply_ = rest.substr(0, frame_length(rest));
            return state_ = State::answered;
        }
        other_address_ = other_address_ || (candidate == Candidate::skipped && echo_fits(rest));
        unsound = unsound || candidate == Candidate::unsound;
        growing = growing || candidate == Candidate::growing;
        if (candidate == Candidate::growing || candidate == Candidate::foreign)
            keep_from = std::min(keep_from, at);
        at += candidate == Candidate::skipped ? frame_length(rest) : 1;
    }
    unsound_ = unsound_ || unsound;
    if (unsound && !growing)
        return state_ = State::failed;
    buffer_.erase(0, keep_from);
    return state_;
}

}  // namespace ampdesk
