// Lines of an nvRam text file, and the blocks in replies: what is read must read the same again, and no
// set command may be longer than a frame holds.
#include "buslink/wire/binary_frame.h"
#include "fuzz/check.h"
#include "tools/nvram_file.h"

namespace {

using namespace ampdesk;
using fuzz::check;

void check_line(std::string_view line) {
    const NvramLine read = parse_nvram_line(line);
    check(read.blank <= line.size(), "the blank stands in the line");
    if (!read.block)
        return;
    const NvramBlock& block = *read.block;
    check(block.number >= 0 && block.number <= k_last_nvram_block, "a block number of 16 bits");
    check(block.trailing.size() == 2, "two trailing bytes");
    check(parse_nvram_line(nvram_line(block)).block == block, "what is written reads the same");
    const std::string command = nvram_set_command(block);
    check(command.size() <= k_longest_command, "a frame holds it");
    check(command.ends_with(block.data + block.trailing), "the bytes of the line go out");
}

// Any bytes as the payload of a sound reply; bus_command hands on no other.
void check_reply(std::string_view bytes) {
    static const Crc16 crc;
    if (bytes.size() > k_longest_command)
        return;
    for (const char first : {'\x06', '\x15'}) {
        const std::string reply = build_reply_frame(crc, first, 1, bytes);
        check(nvram_reply_is_nak(reply) == (first == '\x15'), "a NAK is a NAK");
        nvram_reply_ends_well(reply);
        const auto block = nvram_block_of_reply(reply);
        check(block.has_value() == (bytes.size() >= 6), "a block from six bytes on");
        if (block)
            check(block->data + block->trailing == bytes.substr(4), "the block's bytes are the reply's");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::text_of(data, size);
    ends_nvram_file(text);
    check_line(text);
    check_reply(text);
    return 0;
}
