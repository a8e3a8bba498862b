#include "station/terminal_talk.h"

#include <iterator>
#include <utility>

#include "terminal/received_text.h"

namespace ampdesk {

void join(notice::TerminalText& waiting, notice::TerminalText&& newer) {
    waiting.bytes += newer.bytes;
    if (waiting.bytes.size() > k_terminal_limit)
        waiting.bytes.erase(0, waiting.bytes.size() - k_terminal_limit);
}

void join(notice::Traffic& waiting, notice::Traffic&& newer) {
    auto& chunks = waiting.chunks;
    chunks.insert(chunks.end(), std::make_move_iterator(newer.chunks.begin()),
                  std::make_move_iterator(newer.chunks.end()));
    while (chunks.size() > TrafficLog::k_entries) chunks.pop_front();
}

}  // namespace ampdesk
