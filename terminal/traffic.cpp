#include "terminal/traffic.h"

#include <algorithm>

#include "platform/numbers.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_bytes_a_line = 16;

std::string hex_form(std::string_view bytes) {
    constexpr std::string_view k_digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(3 * bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += k_digits[byte >> 4U];
        text += k_digits[byte & 15U];
        text += ' ';
    }
    return text;
}

std::string text_form(std::string_view bytes) {
    std::string text(bytes);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '.');
    return text;
}

// ASCII letters only: the program's language does not matter.
bool contains(std::string_view text, std::string_view wanted) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    const auto same = [&](char a, char b) { return lower(a) == lower(b); };
    return std::search(text.begin(), text.end(), wanted.begin(), wanted.end(), same) != text.end();
}

std::string time_of_day(const CivilTime& t) {
    return zero_padded(t.hour, 2) + ":" + zero_padded(t.minute, 2) + ":" + zero_padded(t.second, 2) + "." +
           zero_padded(t.millisecond, 3);
}

std::string head_of(const TrafficEntry& entry) {
    const std::string line =
        entry.line == TrafficLine::bus ? "unit " + zero_padded(entry.unit, 2) : "terminal";
    return time_of_day(entry.time) + "  " + left_aligned(line, 8) + "  " +
           (entry.sent ? "sent      " : "received  ");
}

}  // namespace

bool TrafficFilter::passes(const TrafficEntry& entry) const {
    if (line && *line != entry.line)
        return false;
    if (unit && (entry.line != TrafficLine::bus || *unit != entry.unit))
        return false;
    if (sent && *sent != entry.sent)
        return false;
    return text.empty() || contains(hex_form(entry.bytes), text) || contains(text_form(entry.bytes), text);
}

void TrafficLog::add(const TrafficChunk& chunk) {
    std::string_view bytes = chunk.bytes;
    if (bytes.empty())
        return;
    if (open(chunk.at)) {
        TrafficEntry& last = entries_.back();
        if (last.line == chunk.line && last.sent == chunk.sent && last.unit == chunk.unit) {
            const std::string_view part = bytes.substr(0, k_entry_bytes - last.bytes.size());
            last.bytes += part;
            bytes.remove_prefix(part.size());
        }
    }
    last_ = chunk.at;
    settled_ = false;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), k_entry_bytes))) {
        if (entries_.size() == k_entries) {
            entries_.pop_front();
            ++first_;
        }
        entries_.push_back(
            {chunk.time, chunk.line, chunk.sent, chunk.unit, std::string(bytes.substr(0, k_entry_bytes))});
    }
}

std::uint64_t TrafficLog::settled_end(Instant now) {
    settled_ = !open(now);
    return settled_ ? end() : end() - 1;
}

void TrafficLog::clear() {
    first_ = end();
    entries_.clear();
}

std::vector<std::string> traffic_lines(const TrafficEntry& entry) {
    std::vector<std::string> lines;
    std::string head = head_of(entry);
    for (std::string_view rest = entry.bytes; !rest.empty();) {
        const std::string_view part = rest.substr(0, k_bytes_a_line);
        rest.remove_prefix(part.size());
        lines.push_back(head + left_aligned(hex_form(part), 3 * k_bytes_a_line) + " " + text_form(part));
        head.assign(head.size(), ' ');
    }
    return lines;
}

std::vector<std::string> traffic_file(const TrafficLog& log, const TrafficFilter& filter,
                                      const CivilTime& now) {
    std::vector<std::string> lines = {"Traffic up to " + zero_padded(now.year, 4) + "-" +
                                      zero_padded(now.month, 2) + "-" + zero_padded(now.day, 2) + " " +
                                      time_of_day(now)};
    for (std::uint64_t i = log.first(); i < log.end(); ++i) {
        if (!filter.passes(log.entry(i)))
            continue;
        const std::vector<std::string> entry = traffic_lines(log.entry(i));
        lines.insert(lines.end(), entry.begin(), entry.end());
    }
    return lines;
}

}  // namespace ampdesk
