// The lines of an nvRam text file and the commands and replies that carry the same blocks on the bus.
//
//   11-21-2025            the day of the read; not looked at when the file is set
//   12 00A1FF3C 5A07      block number, data bytes, the two bytes behind them
//   END_SRAM              ends a file early, anywhere in a line
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace ampdesk {

struct NvramBlock {
    int number = 0;        // 0..65535
    std::string data;      // as many bytes as the amplifier sends
    std::string trailing;  // two bytes; the amplifier's, sent back unchanged
    bool operator==(const NvramBlock&) const = default;
};

inline constexpr int k_last_nvram_block = 65535;

// Month-day-year with two, two and four digits.
std::string nvram_date(const CivilTime& time);

std::string nvram_line(const NvramBlock& block);

bool ends_nvram_file(std::string_view line);

// What a line of the file says. No block when the line is malformed: without a second blank, without
// a block number of 0..65535, with anything but hexadecimal digits where bytes belong, with fewer
// than four digits at its end, or with more data than a command frame holds. Blanks around the
// parts and anything behind the four digits do not count; an odd last digit of the data is a byte.
struct NvramLine {
    std::optional<NvramBlock> block;
    // Where the blank behind the data stands, counted from 1 at the start of the data; 0 for none.
    std::size_t blank = 0;
};
NvramLine parse_nvram_line(std::string_view line);

// Payloads for bus_command.
std::string nvram_read_command(int number);
std::string nvram_set_command(const NvramBlock& block);

// The number of the block that a whole reply frame names; nothing when it repeats no more of its
// command than the first bytes, which a reply may do.
std::optional<int> nvram_number_of_reply(std::string_view reply);

// What a whole reply frame holds: the command again, as far as the amplifier repeats it, and the rest.
std::string_view nvram_data_of_reply(std::string_view reply);

// The block in a whole reply frame to a read command; nothing when the reply has no room for one.
std::optional<NvramBlock> nvram_block_of_reply(std::string_view reply);

// The amplifier refused: with a read command, there are no more blocks.
bool nvram_reply_is_nak(std::string_view reply);

// The last byte of the reply's payload says that the whole memory has been read.
bool nvram_reply_ends_well(std::string_view reply);

}  // namespace ampdesk
