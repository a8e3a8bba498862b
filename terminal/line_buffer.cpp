#include "terminal/line_buffer.h"

namespace ampdesk {

LineBuffer::Received LineBuffer::receive(std::string_view chunk) {
    Received result;
    result.marked = chunk.find(k_remote_marker) != std::string_view::npos;
    result.overflowed = !result.marked && text_.size() > k_limit;
    if (result.marked || result.overflowed)
        text_.clear();
    text_ += chunk;
    std::size_t start = 0;
    for (std::size_t end = text_.find('\r'); end != std::string::npos; end = text_.find('\r', start)) {
        const std::string_view line(text_.data() + start, end - start);
        start = end + 1;
        const std::size_t marker = line.rfind(k_remote_marker);
        if (marker == std::string_view::npos)
            continue;
        result.remote_request = true;
        result.requests.emplace_back(line.substr(marker + k_remote_marker.size()));
    }
    text_.erase(0, start);
    return result;
}

bool LineBuffer::overflows_still() {
    if (text_.size() <= k_later_limit)
        return false;
    text_.clear();
    return true;
}

}  // namespace ampdesk
