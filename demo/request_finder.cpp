#include "demo/request_finder.h"

#include <algorithm>

#include "buslink/wire/control_characters.h"
#include "buslink/wire/text_frame.h"
#include "platform/run_time_error.h"

namespace ampdesk::demo {

namespace {

constexpr std::size_t k_text_start = 5;      // STX, ">", two digits, blank
constexpr std::size_t k_text_end = 4;        // ETX, two checksum characters, CR
constexpr std::size_t k_longest_text = 260;  // the whole frame

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// False also for a frame whose sum is too large for any checksum.
bool has_checksum(std::string_view frame, std::string_view characters) {
    try {
        return characters == text_checksum(frame);
    } catch (const RunTimeError&) {
        return false;
    }
}

}  // namespace

RequestFinder::Finding RequestFinder::look_binary(std::string_view bytes) const {
    if (bytes.size() < 3)
        return {.growing = true};
    const std::size_t count = static_cast<unsigned char>(bytes[2]);
    if (bytes.size() < count + 5)
        return {.growing = true};
    if (crc_.c_chkCRC(bytes.substr(0, count + 5)) != 0)
        return {};
    return {.length = count + 5,
            .request = {.text = false,
                        .address = static_cast<unsigned char>(bytes[1]),
                        .command = std::string(bytes.substr(3, count))}};
}

RequestFinder::Finding RequestFinder::look_text(std::string_view bytes) {
    for (std::size_t i = 1; i < std::min(bytes.size(), k_text_start); ++i) {
        const bool fits = i == 1 ? bytes[i] == '>' : i == 4 ? bytes[i] == ' ' : is_digit(bytes[i]);
        if (!fits)
            return {};
    }
    const std::size_t etx = bytes.find(k_etx);
    const std::size_t end = etx == std::string_view::npos ? bytes.size() : etx;
    const bool printable = std::all_of(bytes.begin() + 1, bytes.begin() + static_cast<std::ptrdiff_t>(end),
                                       [](char c) { return static_cast<unsigned char>(c) >= 32; });
    if (!printable || end > k_longest_text)
        return {};
    if (etx == std::string_view::npos || bytes.size() < etx + k_text_end)
        return {.growing = true};
    if (etx < k_text_start || bytes[etx + 3] != k_cr ||
        !has_checksum(bytes.substr(0, etx + 1), bytes.substr(etx + 1, 2)))
        return {};
    return {.length = etx + k_text_end,
            .request = {.text = true,
                        .address = (bytes[2] - '0') * 10 + (bytes[3] - '0'),
                        .command = std::string(bytes.substr(k_text_start, etx - k_text_start))}};
}

RequestFinder::Finding RequestFinder::look(std::string_view bytes) const {
    if (bytes[0] == k_soh)
        return look_binary(bytes);
    if (bytes[0] == k_stx)
        return look_text(bytes);
    return {};
}

std::vector<Request> RequestFinder::feed(std::string_view bytes) {
    buffer_.append(bytes);
    std::vector<Request> requests;
    const std::string_view all = buffer_;
    std::size_t keep_from = all.size();  // where the first frame may start that is still coming
    std::size_t at = 0;
    while (at < all.size()) {
        Finding finding = look(all.substr(at));
        if (finding.length > 0) {
            // A whole sound frame proves what seemed to be coming before it to be noise.
            requests.push_back(std::move(finding.request));
            at += finding.length;
            keep_from = all.size();
            continue;
        }
        if (finding.growing)
            keep_from = std::min(keep_from, at);
        ++at;
    }
    buffer_.erase(0, keep_from);
    return requests;
}

}  // namespace ampdesk::demo
