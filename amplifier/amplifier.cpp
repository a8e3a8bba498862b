#include "amplifier/amplifier.h"

#include <algorithm>

#include "amplifier/commands.h"
#include "buslink/wire/control_characters.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_header = 3;  // ACK or NAK, second byte, length
constexpr std::size_t k_check = 2;   // CRC

// What follows the echo of the command, check bytes included; empty for a reply that is too short.
std::string_view behind_echo(std::string_view reply, std::string_view command) {
    const std::size_t front = k_header + command.size();
    return reply.size() > front ? reply.substr(front) : std::string_view{};
}

// The refusal code of a NAK reply in the operator's words; empty when the reply carries no code.
std::string refusal_text(std::string_view reply, std::string_view command) {
    const std::string_view rest = behind_echo(reply, command);
    if (rest.size() <= k_check)
        return {};
    const auto code = static_cast<unsigned char>(rest[rest.size() - k_check - 1]);
    switch (code) {
        case 1:
            return "Command Not Found";
        case 3:
            return "Remote Is Not On";
        case 4:
            return "Invalid Data";
        default:
            return "Setting Failed, code H" + hex(code);
    }
}

}  // namespace

Status Amplifier::read_status() {
    return *Status::parse(read_itemAll(k_status_request));
}

Analog Amplifier::read_analog() {
    return *Analog::parse(read_itemAll(k_analog_request), negative_);
}

Limits Amplifier::read_limits() {
    return *Limits::parse(read_itemAll(k_limits_request), negative_);
}

AlarmState Amplifier::read_alarm_state() {
    return *AlarmState::parse(read_itemAll(k_alarm_request));
}

Shutdown Amplifier::read_shutdown() {
    return *Shutdown::parse(read_itemAll(k_shutdown_request));
}

std::optional<Identity> Amplifier::read_identity() {
    return Identity::parse(read_itemAll(k_identity_request));
}

// With a dead line every head would go on showing its last values until it had waited for six replies of
// its own, one head after the other.
bool Amplifier::only_looks() const {
    constexpr int k_dead_line = 8;  // no single head gets there without its error screen
    return look_only_ || bus_.unanswered_in_a_row() >= k_dead_line;
}

// One try of a read. A payload has two bytes at least.
bool Amplifier::exchange(std::string_view command, std::string& payload, bool whole_echo) {
    std::string reply;
    const bool look = only_looks();
    const Duration limit = look ? look_limit() : Duration(BusLink::k_reply_limit);
    looks_ = look ? looks_ + 1 : 0;
    const std::int16_t length = bus_.bus_command(unit_address, command, reply, limit);
    if (length > 0)
        longest_reply_ = std::max(longest_reply_, bus_.last_reply_time);
    const std::string_view rest = behind_echo(reply, command);
    const bool ours =
        !whole_echo || std::string_view(reply).substr(0, k_header + command.size()).ends_with(command);
    const bool good = length > 6 && reply[0] == k_ack && rest.size() >= 2 + k_check && ours;
    payload = good ? rest.substr(0, rest.size() - k_check) : std::string_view{};
    comm_error = good ? 0 : 1;
    return good;
}

std::string Amplifier::read_itemAll(std::string_view command, bool whole_echo) {
    std::string payload;
    const bool good =
        exchange(command, payload, whole_echo) || (!only_looks() && exchange(command, payload, whole_echo));
    if (!good)
        throw RunTimeError::no_answer();
    return payload;
}

std::string Amplifier::read_item(std::string_view word) {
    std::string reply;
    for (int attempt = 0; attempt < (look_only_ ? 1 : 2); ++attempt) {
        comm_error = bus_.text_command(unit_address, word, reply);
        reply.erase(std::min(reply.find(k_etx), reply.size()));
        if (comm_error == 0 && reply.find('=') != std::string::npos)
            break;
    }
    if (comm_error != 0)
        throw RunTimeError::no_answer();
    if (reply.starts_with(k_stx))
        reply.erase(0, 1);
    return std::string(trimmed(std::string_view(reply).substr(reply.find('=') + 1)));  // npos + 1 is 0
}

std::int16_t Amplifier::set_item(std::string_view command) {
    try {
        std::string reply;
        const std::int16_t length = bus_.bus_command(unit_address, command, reply);
        if (length > 6 && reply[0] == k_ack)
            return 0;
        const bool refused = length > 0 && reply[0] == k_nak;
        if (const std::string text = refused ? refusal_text(reply, command) : ""; !text.empty())
            tell_refusal(text);
    } catch (const RunTimeError&) {
        tell_refusal("Cannot set the parameter");
    }
    return 1;
}

void Amplifier::tell_refusal(const std::string& text) const {
    if (on_refusal)
        on_refusal(text);
}

Duration Amplifier::look_limit() const {
    constexpr int k_patient_look = 12;
    constexpr Duration k_shortest = std::chrono::milliseconds(300);
    const Duration longest = BusLink::k_reply_limit;
    if (looks_ % k_patient_look == k_patient_look - 1)
        return longest;
    return std::clamp(3 * longest_reply_, k_shortest, longest);
}

}  // namespace ampdesk
