#include "terminal/text_transfer.h"

namespace ampdesk {

TextSender::TextSender(std::string_view file) {
    text_.reserve(file.size() + file.size() / 16);
    for (std::size_t i = 0; i < file.size(); ++i) {
        const bool cr_lf = file[i] == '\r' && i + 1 < file.size() && file[i + 1] == '\n';
        if (file[i] == '\n' || file[i] == '\r')
            text_ += "\r\n";
        else
            text_ += file[i];
        i += cr_lf ? 1 : 0;
    }
    progress_.total = text_.size();
}

std::string TextSender::take_output(std::size_t limit) {
    if (finished())
        return {};
    std::string next = text_.substr(progress_.bytes, limit);
    progress_.bytes += next.size();
    if (progress_.bytes == text_.size())
        finish(TransferState::done, std::to_string(text_.size()) + " bytes sent.");
    return next;
}

void TextReceiver::feed(std::string_view bytes, Instant now) {
    if (finished() || bytes.empty())
        return;
    if (file_.size() + bytes.size() > k_longest_file) {
        give_up("The text is longer than " + std::to_string(k_longest_file >> 20U) + " MB.");
        return;
    }
    file_ += bytes;
    progress_.bytes = file_.size();
    deadline_ = now + k_silence;
}

void TextReceiver::tick(Instant now) {
    if (!file_.empty() && now >= deadline_)
        end();
}

void TextReceiver::end() {
    if (!finished())
        finish(TransferState::done, std::to_string(file_.size()) + " bytes received.");
}

}  // namespace ampdesk
