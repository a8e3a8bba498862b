#include "buslink/identity.h"

#include "buslink/bus_link.h"
#include "buslink/wire/control_characters.h"
#include "platform/numbers.h"

namespace ampdesk {

std::string serial_number_of(std::string_view reply) {
    reply = reply.substr(0, reply.find(k_etx));
    reply = reply.substr(0, reply.find(k_cr));
    reply = reply.substr(reply.find('=') + 1);  // none: npos + 1 is 0
    if (!reply.empty() && reply.front() == k_stx)
        reply.remove_prefix(1);
    return std::string(trimmed(reply));
}

std::string amplifier_number(std::string_view serial_number) {
    return std::to_string(round_to_int32(lenient_number(serial_number)));
}

std::string model_of(std::string_view reply) {
    const std::size_t star = reply.find('*');
    if (star != std::string_view::npos)
        reply.remove_prefix(star + 1);
    else if (!reply.empty() && reply.front() == k_stx)
        reply.remove_prefix(1);
    reply = trimmed(reply);
    const std::size_t blank = reply.find(' ');
    return blank == std::string_view::npos ? std::string() : std::string(reply.substr(0, blank));
}

std::string read_serial_number(BusLink& bus, int address) {
    std::string reply;
    const bool answered = bus.text_command(static_cast<std::int16_t>(address), "RDS/N", reply) == 0;
    return answered ? serial_number_of(reply) : std::string();
}

std::optional<std::string> read_model(BusLink& bus, int address) {
    std::string reply;
    if (bus.text_command(static_cast<std::int16_t>(address), "*IDN?", reply) != 0)
        return std::nullopt;
    return model_of(reply);
}

}  // namespace ampdesk
