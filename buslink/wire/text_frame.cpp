#include "buslink/wire/text_frame.h"

#include <cstdio>

#include "buslink/wire/control_characters.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

std::string text_checksum(std::string_view frame) {
    unsigned sum = 0;
    for (const char c : frame.substr(std::min<std::size_t>(1, frame.size())))
        sum += static_cast<unsigned char>(c);
    if (sum > 32767)
        throw RunTimeError::overflow();
    if (sum < 256)
        return "00";
    std::string digits = hex(sum);
    if (digits.size() % 2 == 1)
        digits.insert(digits.begin(), '0');
    return digits.substr(0, 2);
}

std::string build_text_frame(int address, std::string_view command) {
    const int wrapped = ((address % 100) + 100) % 100;
    std::string frame{k_stx, '>', static_cast<char>('0' + wrapped / 10),
                      static_cast<char>('0' + wrapped % 10), ' '};
    frame.append(command);
    frame += k_etx;
    frame += text_checksum(frame);
    frame += k_cr;
    return frame;
}

std::optional<std::string> TextReplyParser::feed(std::string_view bytes) {
    buffer_.append(bytes);
    for (;;) {
        const std::size_t end = buffer_.find(k_cr);
        if (end == std::string::npos)
            break;
        const std::string line = buffer_.substr(0, end + 1);
        const bool own_echo = line.ends_with(sent_);
        if (!own_echo && line.find(k_etx) != std::string::npos)
            return line;
        buffer_.erase(0, end + 1);
    }
    if (buffer_.size() > k_longest_text)
        buffer_.erase(0, buffer_.size() - k_longest_text);
    return std::nullopt;
}

}  // namespace ampdesk
