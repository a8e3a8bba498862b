// The bus commands that a simulated amplifier knows, binary and text.
#include <array>
#include <optional>

#include "demo/sim_amplifier.h"
#include "demo/whole_number.h"

namespace ampdesk::demo {

using namespace std::string_view_literals;

namespace {

struct Outcome {
    Refusal refusal = Refusal::none;
    std::string payload;
    Outcome(Refusal why) : refusal(why) {}
    Outcome(std::string data) : payload(std::move(data)) {}
};

unsigned byte_at(std::string_view bytes, std::size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

// A 16-bit operand, low byte first.
int word_of(std::string_view operand) {
    return static_cast<int>(byte_at(operand, 0) + 256 * byte_at(operand, 1));
}

// The words that are known in a binary and in a text frame alike.
struct Word {
    std::string_view name;
    std::string (*value)(SimAmplifier&);  // what stands behind the name in the reply
    bool name_shown;                      // in the text reply; a binary one echoes it anyway
};

constexpr std::array<Word, 4> k_words = {{
    {"RDBAND", [](SimAmplifier& a) { return "=" + std::to_string(a.band()); }, true},
    {"RDSTAT", [](SimAmplifier& a) { return "=" + a.readable_status(); }, true},
    {"RDS/N", [](SimAmplifier& a) { return "=" + std::to_string(a.model().serial); }, true},
    {"*IDN?", [](SimAmplifier& a) { return "JEX*" + a.model().name + " 400W TWTA"; }, false},
}};

constexpr std::string_view k_set_band = "SBAND ";

Outcome set_band(SimAmplifier& amplifier, std::string_view operand) {
    const std::optional<long> number = whole_number(operand, 0, 255);
    return number ? amplifier.set_band(static_cast<int>(*number)) : Refusal::invalid_data;
}

Outcome read_block(SimAmplifier& amplifier, std::string_view operand) {
    std::optional<std::string> bytes = amplifier.nvram.read(static_cast<std::size_t>(word_of(operand)));
    if (!bytes)
        return Refusal::no_such_block;
    return *std::move(bytes);
}

Outcome set_block(SimAmplifier& amplifier, std::string_view operand) {
    const bool taken = amplifier.nvram.write(static_cast<std::size_t>(word_of(operand)), operand.substr(2));
    return taken ? Refusal::none : Refusal::invalid_data;
}

// A command is known by its first bytes; what follows them is its operand.
struct Command {
    std::string_view key;
    std::size_t shortest;  // operand length
    std::size_t longest;
    bool setting;  // needs remote to be on
    Outcome (*run)(SimAmplifier&, std::string_view operand);
};

using Amp = SimAmplifier;
using Bytes = std::string_view;

constexpr std::array k_commands = {
    Command{"\x11"sv, 0, 0, false, [](Amp& a, Bytes) -> Outcome { return a.status_block(); }},
    Command{"\x12"sv, 0, 0, false, [](Amp& a, Bytes) -> Outcome { return a.analog_block(); }},
    Command{"\xA0\x15\x00"sv, 0, 0, false, [](Amp& a, Bytes) -> Outcome { return a.limits_block(); }},
    Command{"\xA0\x16\x00"sv, 0, 0, false, [](Amp& a, Bytes) -> Outcome { return a.identity_text(); }},
    Command{"\xA0\x17\x00"sv, 0, 0, false, [](Amp& a, Bytes) -> Outcome { return a.alarm_state(); }},
    Command{"\xA0\x18\x00"sv, 0, 0, false, [](Amp& a, Bytes) -> Outcome { return a.shutdown_state(); }},
    Command{"\xA0\x1A"sv, 1, 1, false,
            [](Amp& a, Bytes n) -> Outcome { return a.event_entry(byte_at(n, 0)); }},
    Command{"\x10\x12"sv, 0, 0, true, [](Amp& a, Bytes) -> Outcome { return a.set_hv(true); }},
    Command{"\x10\x13"sv, 0, 0, true, [](Amp& a, Bytes) -> Outcome { return a.set_hv(false); }},
    Command{"\x10\x15"sv, 0, 0, true, [](Amp& a, Bytes) -> Outcome { return a.acknowledge_shutdown(); }},
    Command{"\x10\x16"sv, 0, 0, true, [](Amp& a, Bytes) -> Outcome { return a.set_rf(true); }},
    Command{"\x10\x17"sv, 0, 0, true, [](Amp& a, Bytes) -> Outcome { return a.set_rf(false); }},
    Command{"\x10\x18"sv, 2, 2, true,
            [](Amp& a, Bytes tenths) -> Outcome { return a.set_attenuation(word_of(tenths)); }},
    Command{"\x10\x1A"sv, 0, 0, true, [](Amp& a, Bytes) -> Outcome { return a.throw_switch(); }},
    Command{"\x10\x1B"sv, 1, 1, true,
            [](Amp& a, Bytes m) -> Outcome { return a.set_switch_mode(static_cast<int>(byte_at(m, 0))); }},
    Command{"\x20\x20"sv, 2, 2, false, read_block},
    Command{"\x40\x20"sv, 2, 255, true, set_block},
    Command{k_set_band, 1, 3, true, set_band},
};

Outcome run(SimAmplifier& amplifier, std::string_view command) {
    for (const Word& word : k_words) {
        if (command == word.name)
            return word.value(amplifier);
    }
    for (const Command& known : k_commands) {
        if (command.substr(0, known.key.size()) != known.key)
            continue;
        const std::string_view operand = command.substr(known.key.size());
        if (known.setting && !amplifier.remote_on())
            return Refusal::remote_is_not_on;
        if (known.setting && amplifier.faults.refuse_code != 0)
            return static_cast<Refusal>(amplifier.faults.refuse_code);
        if (operand.size() < known.shortest || operand.size() > known.longest)
            return Refusal::invalid_data;
        return known.run(amplifier, operand);
    }
    return Refusal::command_not_found;
}

}  // namespace

SimAmplifier::Reply SimAmplifier::answer(std::string_view command) {
    refresh();
    Outcome outcome = run(*this, command);
    const bool accepted = outcome.refusal == Refusal::none;
    if (!accepted)
        outcome.payload = static_cast<char>(outcome.refusal);
    // A reply holds 255 data bytes; a very long command is echoed as far as there is room.
    const std::string_view echo = command.substr(0, 255 - outcome.payload.size());
    return {.accepted = accepted, .data = std::string(echo) + outcome.payload};
}

std::string SimAmplifier::answer_text(std::string_view command) {
    refresh();
    for (const Word& word : k_words) {
        if (command == word.name)
            return (word.name_shown ? std::string(word.name) : std::string()) + word.value(*this);
    }
    const bool known = command.substr(0, k_set_band.size()) == k_set_band;
    const Outcome outcome = known ? run(*this, command) : Refusal::command_not_found;
    if (outcome.refusal != Refusal::none)
        return "NAK " + std::to_string(static_cast<int>(outcome.refusal));
    return "SBAND=" + std::to_string(band_);
}

}  // namespace ampdesk::demo
