#include "tools/nvram_file.h"

#include <cmath>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "platform/numbers.h"
#include "tools/hex_text.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_trailing = 2;

// Offsets in a whole reply frame: ACK, second header byte, payload length, payload.
constexpr std::size_t k_length_at = 2;
constexpr std::size_t k_number_at = 5;  // behind the echo of the command's first two bytes
constexpr std::size_t k_data_at = 7;
constexpr char k_all_blocks_read = 0x20;

unsigned byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

// One past the payload of a whole reply frame.
std::size_t payload_end(std::string_view reply) {
    return k_length_at + 1 + byte_at(reply, k_length_at);
}

std::string numbered(char first, char second, int number) {
    return {first, second, static_cast<char>(number % 256), static_cast<char>(number / 256)};
}

// A text that does not begin with a digit names no block, though as a lenient number it is 0.
std::optional<int> block_number(std::string_view text) {
    const double value = lenient_number(text);
    if (text.empty() || text[0] < '0' || text[0] > '9' || value > k_last_nvram_block ||
        value != std::floor(value))
        return std::nullopt;
    return static_cast<int>(value);
}

}  // namespace

std::string nvram_date(const CivilTime& time) {
    return zero_padded(time.month, 2) + "-" + zero_padded(time.day, 2) + "-" + zero_padded(time.year, 4);
}

std::string nvram_line(const NvramBlock& block) {
    return std::to_string(block.number) + " " + hex_pairs(block.data) + " " + hex_pairs(block.trailing);
}

bool ends_nvram_file(std::string_view line) {
    return line.find("END_SRAM") != std::string_view::npos;
}

NvramLine parse_nvram_line(std::string_view line) {
    line = trimmed(line);
    const std::size_t number_end = line.find(' ');
    if (number_end == std::string_view::npos)
        return {};
    const std::string_view rest = trimmed(line.substr(number_end));
    const std::size_t data_end = rest.find(' ');
    if (data_end == std::string_view::npos)
        return {};
    NvramLine result{.block = std::nullopt, .blank = data_end + 1};
    const auto number = block_number(line.substr(0, number_end));
    const auto data = bytes_of_hex(rest.substr(0, data_end));
    const std::string_view last = trimmed(rest.substr(data_end)).substr(0, 2 * k_trailing);
    const auto trailing = bytes_of_hex(last);
    if (!number || !data || !trailing || last.size() != 2 * k_trailing)
        return result;
    const NvramBlock block{.number = *number, .data = *data, .trailing = *trailing};
    if (nvram_set_command(block).size() <= k_longest_command)
        result.block = block;
    return result;
}

std::string nvram_read_command(int number) {
    return numbered(0x20, 0x20, number);
}

std::string nvram_set_command(const NvramBlock& block) {
    return numbered(0x40, 0x20, block.number) + block.data + block.trailing;
}

std::optional<int> nvram_number_of_reply(std::string_view reply) {
    if (payload_end(reply) < k_data_at)
        return std::nullopt;
    return static_cast<int>(byte_at(reply, k_number_at) + 256 * byte_at(reply, k_number_at + 1));
}

std::string_view nvram_data_of_reply(std::string_view reply) {
    return reply.substr(k_length_at + 1, byte_at(reply, k_length_at));
}

std::optional<NvramBlock> nvram_block_of_reply(std::string_view reply) {
    const std::size_t end = payload_end(reply);
    if (end < k_data_at + k_trailing)
        return std::nullopt;
    const std::size_t trailing_at = end - k_trailing;
    return NvramBlock{.number = *nvram_number_of_reply(reply),
                      .data = std::string(reply.substr(k_data_at, trailing_at - k_data_at)),
                      .trailing = std::string(reply.substr(trailing_at, k_trailing))};
}

bool nvram_reply_is_nak(std::string_view reply) {
    return reply[0] == k_nak;
}

bool nvram_reply_ends_well(std::string_view reply) {
    return reply[payload_end(reply) - 1] == k_all_blocks_read;
}

}  // namespace ampdesk
