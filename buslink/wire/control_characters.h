// Control characters of the bus.
#pragma once

namespace ampdesk {

inline constexpr char k_soh = 1;
inline constexpr char k_stx = 2;
inline constexpr char k_etx = 3;
inline constexpr char k_ack = 6;
inline constexpr char k_cr = 13;
inline constexpr char k_nak = 21;

}  // namespace ampdesk
