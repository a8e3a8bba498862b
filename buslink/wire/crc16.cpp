#include "buslink/wire/crc16.h"

namespace ampdesk {

Crc16::Crc16(CrcParameters parameters) : initial_(parameters.initial) {
    for (unsigned i = 0; i < table_.size(); ++i) {
        unsigned value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1U) != 0 ? (value >> 1U) ^ parameters.polynomial : value >> 1U;
        table_[i] = static_cast<std::uint16_t>(value);
    }
}

std::uint16_t Crc16::c_chkCRC(std::string_view bytes) const {
    unsigned value = initial_;
    for (const char c : bytes)
        value = (value >> 8U) ^ table_[(value ^ static_cast<unsigned char>(c)) & 0xFFU];
    return static_cast<std::uint16_t>(value);
}

}  // namespace ampdesk
