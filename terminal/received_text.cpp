#include "terminal/received_text.h"

#include <algorithm>

namespace ampdesk {

ShownText ShowData(std::size_t shown, std::string_view data) {
    ShownText result;
    if (shown >= k_terminal_limit)
        result.drop = k_terminal_cut;
    for (const char c : data) {
        if (c != '\b')
            result.insert += c;
        else if (!result.insert.empty())
            result.insert.pop_back();
    }
    // Only now: a backspace may have taken a line feed.
    std::erase(result.insert, '\n');
    return result;
}

}  // namespace ampdesk
