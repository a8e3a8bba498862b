#include "terminal/xmodem_block.h"

#include <numeric>

namespace ampdesk {

std::uint16_t xmodem_crc(std::string_view data) {
    unsigned crc = 0;
    for (const char c : data) {
        crc ^= static_cast<unsigned>(static_cast<unsigned char>(c)) << 8U;
        for (int bit = 0; bit < 8; ++bit) crc = (crc << 1U) ^ ((crc & 0x8000U) != 0 ? 0x1021U : 0U);
    }
    return static_cast<std::uint16_t>(crc);
}

std::string xmodem_check(XmodemCheck check, std::string_view data) {
    if (check == XmodemCheck::sum)
        return {static_cast<char>(std::accumulate(data.begin(), data.end(), 0U))};
    const unsigned crc = xmodem_crc(data);
    return {static_cast<char>(crc >> 8U), static_cast<char>(crc)};
}

std::string xmodem_block(std::uint8_t number, std::string_view data, XmodemCheck check) {
    std::string body(data);
    body.resize(k_xmodem_data, k_sub);
    const std::string head = {k_soh, static_cast<char>(number), static_cast<char>(255 - number)};
    return head + body + xmodem_check(check, body);
}

}  // namespace ampdesk
