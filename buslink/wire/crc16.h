// The 16-bit CRC over bus frames, reflected and without final inversion. Sent low byte first, so
// that the CRC over a whole frame, its own CRC included, is 0.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ampdesk {

struct CrcParameters {
    std::uint16_t polynomial = 0xA001;  // reflected form
    std::uint16_t initial = 0x0000;
    bool operator==(const CrcParameters&) const = default;
};

class Crc16 {
  public:
    // Prepares the table.
    explicit Crc16(CrcParameters parameters = {});

    // CRC of the bytes; 0 for a whole sound frame.
    std::uint16_t c_chkCRC(std::string_view bytes) const;

  private:
    std::uint16_t initial_;
    std::array<std::uint16_t, 256> table_{};
};

}  // namespace ampdesk
