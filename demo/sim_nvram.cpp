#include "demo/sim_nvram.h"

#include <random>

#include "buslink/wire/crc16.h"

namespace ampdesk::demo {

namespace {

constexpr std::size_t k_data_bytes = 16;
constexpr std::size_t k_trailing_bytes = 2;

}  // namespace

SimNvram::SimNvram(long serial) {
    std::minstd_rand random(static_cast<unsigned>(serial));
    const Crc16 crc;
    for (std::size_t block = 0; block < k_blocks; ++block) {
        std::string bytes;
        for (std::size_t i = 0; i < k_data_bytes; ++i) bytes += static_cast<char>(random() >> 8U);
        const unsigned check = crc.c_chkCRC(bytes);
        bytes += static_cast<char>(check & 0xFFU);
        bytes += static_cast<char>(check >> 8U);
        blocks_.push_back(bytes);
    }
}

std::optional<std::string> SimNvram::read(std::size_t block) const {
    if (block >= blocks_.size())
        return std::nullopt;
    return blocks_[block];
}

bool SimNvram::write(std::size_t block, std::string_view bytes) {
    if (block >= blocks_.size() || bytes.size() <= k_trailing_bytes ||
        bytes.size() > k_longest_block + k_trailing_bytes)
        return false;
    blocks_[block] = bytes;
    return true;
}

}  // namespace ampdesk::demo
