// How one control head reads and writes its amplifier: blocks, items and settings.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "controlhead/services.h"

namespace ampdesk {

class AmplifierAccess {
  public:
    AmplifierAccess(HeadServices& services, std::int16_t address)
        : unit_address(address), services_(services) {}

    // Command 0x12. Throws error 100; the block then keeps what it held.
    void get_ana_block();

    // Word i, from 1, of the last analog block; 0 outside the block. Throws Overflow, with the name of the
    // quantity, for a high byte of 0x80 or more unless negative words are configured as signed.
    double get_ana_item(std::int16_t i) const;

    // Command 0xA0 0x15 0x00.
    void get_lim_block();
    double get_lim_item(std::int16_t i) const;

    // Sends the command, once more when the first reply is bad, and returns the payload. Throws
    // error 100 when both fail. The exchange compares the first two bytes of the command with their
    // echo; with `whole_echo` a reply that does not echo all of it is bad too.
    std::string read_itemAll(std::string_view command, bool whole_echo = false);

    // Sends the word as a text command, once more when it fails or the reply holds no "=", and returns the
    // text after the first "=", or all of it when the second reply has none either. Throws error 100.
    std::string read_item(std::string_view word);

    // Sends the setting exactly once. Returns 0 when the amplifier took it; tells a refusal by
    // on_refusal and returns 1. Never throws.
    std::int16_t set_item(std::string_view command);

    // Gets the words for a refused setting. Opens no box itself: the caller is in the middle of its work.
    std::function<void(const std::string& text)> on_refusal;

    // While set, a read is tried once and for no longer than look_limit(): how a silent amplifier is
    // looked for without holding up the others. After eight exchanges in a row that nobody has answered
    // all reads are like that until somebody does.
    void look_for_only(bool on) { look_only_ = on; }

    // How long a look for this silent amplifier may wait: three times the longest answer seen of
    // it, 0.3 s to 1.0 s. Every twelfth look waits the full second.
    Duration look_limit() const;

    std::int16_t unit_address;
    std::string ana_block;
    std::string lim_block;
    double last_comm_time = 0;    // seconds since midnight after the last read
    std::int16_t comm_error = 0;  // 1 when the last read failed

  private:
    void tell_refusal(const std::string& text) const;
    bool only_looks() const;
    double word(const std::string& block, std::int16_t i, std::span<const char* const> names) const;
    bool exchange(std::string_view command, std::string& payload, bool whole_echo);

    HeadServices& services_;
    bool look_only_ = false;
    int looks_ = 0;
    Duration longest_reply_{};
};

// Requests that more than one screen makes.
inline constexpr std::string_view k_status_request{"\x11", 1};
inline constexpr std::string_view k_analog_request{"\x12", 1};
inline constexpr std::string_view k_limits_request{"\xA0\x15\x00", 3};
inline constexpr std::string_view k_identity_request{"\xA0\x16\x00", 3};
inline constexpr std::string_view k_alarm_request{"\xA0\x17\x00", 3};
inline constexpr std::string_view k_shutdown_request{"\xA0\x18\x00", 3};

}  // namespace ampdesk
