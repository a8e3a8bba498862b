// The non-volatile parameter memory of a simulated amplifier.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ampdesk::demo {

class SimNvram {
  public:
    static constexpr std::size_t k_blocks = 64;
    static constexpr std::size_t k_longest_block = 64;  // data bytes

    // Every serial number has its own contents: 16 data bytes a block and their CRC behind them.
    explicit SimNvram(long serial);

    // Data bytes and two trailing bytes; nothing past the last block.
    std::optional<std::string> read(std::size_t block) const;

    // Takes 1..k_longest_block data bytes and two trailing bytes and keeps both as they are. False
    // for any other length or a block that is not there.
    bool write(std::size_t block, std::string_view bytes);

  private:
    std::vector<std::string> blocks_;
};

}  // namespace ampdesk::demo
